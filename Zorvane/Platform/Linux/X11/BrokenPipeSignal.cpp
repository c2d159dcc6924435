#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"

#include <pthread.h>

#include <csignal>

namespace zorvane {

namespace {

sigset_t brokenPipe() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    return signals;
}

bool isPending() {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

}  // namespace

void blockBrokenPipeSignal() {
    const sigset_t signals = brokenPipe();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

BrokenPipeScope::BrokenPipeScope() : wasPending_(isPending()) {
    const sigset_t signals = brokenPipe();
    pthread_sigmask(SIG_BLOCK, &signals, &outer_);
}

BrokenPipeScope::~BrokenPipeScope() {
    if (!wasPending_ && isPending()) {
        const sigset_t signals = brokenPipe();
        const timespec atOnce{};
        sigtimedwait(&signals, nullptr, &atOnce);
    }
    pthread_sigmask(SIG_SETMASK, &outer_, nullptr);
}

}  // namespace zorvane
