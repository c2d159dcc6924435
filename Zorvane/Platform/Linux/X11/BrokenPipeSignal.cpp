#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"

#include <pthread.h>

#include <csignal>

namespace zorvane {

void blockBrokenPipeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace zorvane
