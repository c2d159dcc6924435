#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevice.hpp"

#include <utility>

namespace zorvane {

bool PipeWireCaptureDevice::isConnected() const {
    return presence() != Presence::gone;
}

bool PipeWireCaptureDevice::isSuspended() const {
    return presence() == Presence::suspended;
}

NSKeyValueObservation PipeWireCaptureDevice::observeSuspended(std::function<void()> handler) {
    return observers_.add(std::move(handler));
}

void PipeWireCaptureDevice::setPresence(Presence presence) {
    const bool wasSuspended = isSuspended();
    {
        const MutexLock lock(mutex_);
        presence_ = presence;
    }
    if (wasSuspended != (presence == Presence::suspended)) {
        observers_.notify();
    }
}

PipeWireCaptureDevice::Presence PipeWireCaptureDevice::presence() const {
    const MutexLock lock(mutex_);
    return presence_;
}

}  // namespace zorvane
