#include "Zorvane/Platform/Linux/PipeWire/SignalMask.hpp"

#include <pthread.h>

#include <csignal>

namespace zorvane {

void blockAllSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace zorvane
