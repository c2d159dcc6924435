#include "Zorvane/Platform/Virtual/VirtualDeviceSource.hpp"

#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {

using std::chrono::nanoseconds;

VirtualDeviceSource::VirtualDeviceSource(std::shared_ptr<VirtualCaptureDevices> devices, std::string deviceID,
                                         Receiver receiver)
    : devices_(std::move(devices)),
      deviceID_(std::move(deviceID)),
      receiver_(std::move(receiver)),
      strand_(Executor::makeStrand("zv.virtual.device")) {}

void VirtualDeviceSource::post(std::function<void(VirtualDeviceSource&)> job) {
    strand_->post([self = shared_from_this(), job = std::move(job)] { job(*self); });
}

void VirtualDeviceSource::start() {
    post([](VirtualDeviceSource& self) {
        self.running_ = true;
        self.begin();
    });
}

void VirtualDeviceSource::stop() {
    post([](VirtualDeviceSource& self) {
        self.running_ = false;
        if (self.timer_) {
            self.clock().cancel(*std::exchange(self.timer_, std::nullopt));
        }
    });
}

void VirtualDeviceSource::wakeAt(nanoseconds hostTime) {
    timer_ = clock().schedule(hostTime, nanoseconds::zero(), [weak = weak_from_this()] {
        if (auto self = weak.lock()) {
            self->post([](VirtualDeviceSource& source) { source.fire(); });
        }
    });
}

void VirtualDeviceSource::fire() {
    timer_.reset();
    if (running_) {
        wake();
    }
}

bool VirtualDeviceSource::notePresence() {
    const bool isPresent = devices_->isPresent(deviceID_);
    if (std::exchange(isPresent_, isPresent) == isPresent) {
        return isPresent;
    }
    if (isPresent) {
        receiver_.interrupt(nullptr);
    } else {
        lost();
        receiver_.interrupt(std::make_exception_ptr(NSError(AVFoundationErrorDomain, AVErrorDeviceWasDisconnected,
                                                            {.localizedDescription = "The device was unplugged."})));
    }
    return isPresent;
}

std::uint32_t VirtualDeviceSource::scatter() {
    random_ = random_ * 1664525 + 1013904223;
    return random_ >> 8U;
}

}  // namespace zorvane
