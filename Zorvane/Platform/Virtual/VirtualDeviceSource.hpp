// What the sources of a virtual device's sound and pictures have in common.
#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"

namespace zorvane {

/// One media type of one device in one session: it works when its clock says so, until it is stopped. A device that is
/// unplugged gives nothing until it is back, and says so. All work is done on a strand of its own. Any thread may call;
/// nothing blocks.
class VirtualDeviceSource : public std::enable_shared_from_this<VirtualDeviceSource> {
  public:
    /// Both are called on the strand. The reason is null when the device is back.
    struct Receiver {
        std::function<void(const CMSampleBuffer& sample)> deliver;
        std::function<void(std::exception_ptr reason)> interrupt;
    };

    virtual ~VirtualDeviceSource() = default;

    void start();
    void stop();

  protected:
    VirtualDeviceSource(std::shared_ptr<VirtualCaptureDevices> devices, std::string deviceID, Receiver receiver);

    // On the strand:
    virtual void begin() = 0;
    /// The time that `wakeAt` was told has come.
    virtual void wake() = 0;
    /// The device was unplugged.
    virtual void lost() {}

    void wakeAt(std::chrono::nanoseconds hostTime);
    /// Whether the device is there; tells of the change when it has gone or come.
    bool notePresence();
    /// A number of 24 bits; the same ones in every run.
    std::uint32_t scatter();
    void deliver(const CMSampleBuffer& sample) const { receiver_.deliver(sample); }

    const std::shared_ptr<VirtualCaptureDevices>& devices() const { return devices_; }
    const std::string& deviceID() const { return deviceID_; }
    HostClock& clock() const { return *devices_->clock(); }

  private:
    void post(std::function<void(VirtualDeviceSource&)> job);
    void fire();

    const std::shared_ptr<VirtualCaptureDevices> devices_;
    const std::string deviceID_;
    const Receiver receiver_;
    const std::shared_ptr<Executor> strand_;

    // Of the strand:
    std::uint32_t random_ = 1;
    bool isPresent_ = true;
    bool running_ = false;
    std::optional<HostClock::TimerID> timer_;
};

}  // namespace zorvane
