// The capture devices of a virtual desktop.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevice.hpp"
#include "Zorvane/Platform/Virtual/VirtualMicrophone.hpp"

namespace zorvane {

/// What is plugged in, in the order of plugging. The words of a script change it; operations on a device that isn't
/// there do nothing. Observers are told on the thread that makes the change. Any thread.
class VirtualCaptureDevices final : public AVCaptureDevices,
                                    public std::enable_shared_from_this<VirtualCaptureDevices> {
  public:
    /// Sessions run on `clock`; the sound of rooms is told from now on.
    explicit VirtualCaptureDevices(std::shared_ptr<HostClock> clock)
        : clock_(std::move(clock)), origin_(clock_->now()) {}

    const std::shared_ptr<HostClock>& clock() const { return clock_; }
    std::chrono::nanoseconds origin() const { return origin_; }

    std::shared_ptr<AVCaptureDeviceDiscoverySession> makeDiscoverySession(std::vector<AVCaptureDeviceType> deviceTypes,
                                                                          AVMediaType mediaType) override;
    /// What `setDefault` has said, else the first one that is connected.
    std::string defaultDeviceID(AVMediaType mediaType) override;
    std::shared_ptr<AVCaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override;
    AVCaptureDeviceInput makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) override;
    std::shared_ptr<AVCaptureSession> makeCaptureSession() override;

    /// A new device, or one in the place of the one with the same id.
    void plug(VirtualDevice device);
    void unplug(const std::string& uniqueID);
    void rename(const std::string& uniqueID, const std::string& localizedName);
    void setConnected(const std::string& uniqueID, bool isConnected);
    void setSuspended(const std::string& uniqueID, bool isSuspended);
    void setPairing(const std::string& uniqueID, AVCaptureDevicePairing pairing);
    /// Suspends what is built in, or wakes it.
    void setBuiltInSuspended(bool isSuspended);
    void setDefault(AVMediaType mediaType, const std::string& uniqueID);
    /// What the microphone with this id hears. It stays as it is while the device is unplugged.
    VirtualMicrophone microphone(const std::string& uniqueID) const;
    void changeMicrophone(const std::string& uniqueID, const std::function<void(VirtualMicrophone&)>& change);
    /// Whether the device is listed and connected, and not suspended.
    bool isPresent(const std::string& uniqueID) const;
    /// Whether phones are listed; at first they aren't.
    void showPhones(bool show);

  private:
    class Session;
    using DeviceList = std::vector<std::shared_ptr<VirtualCaptureDevice>>;

    /// All that is listed now.
    DeviceList devices() const;
    std::shared_ptr<VirtualCaptureDevice> find(const std::string& uniqueID) const;
    void listChanged(AVMediaType mediaType) const { observers_.notify(mediaType); }

    const std::shared_ptr<HostClock> clock_;
    const std::chrono::nanoseconds origin_;
    mutable Mutex mutex_;
    DeviceList devices_ ZV_GUARDED_BY(mutex_);
    std::map<std::string, VirtualMicrophone> microphones_ ZV_GUARDED_BY(mutex_);
    std::map<AVMediaType, std::string> defaults_ ZV_GUARDED_BY(mutex_);
    bool showsPhones_ ZV_GUARDED_BY(mutex_) = false;
    NSKeyValueObservers<AVMediaType> observers_;  // of the lists, with the media type whose list has changed
};

}  // namespace zorvane
