// The capture devices of a virtual desktop.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Virtual/VirtualCamera.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevice.hpp"
#include "Zorvane/Platform/Virtual/VirtualMicrophone.hpp"

namespace zorvane {

/// What a capture session won't have, though nothing is wrong with it: the input of a device of this media type, the
/// output for it, or the way from one to the other.
struct VirtualSessionRefusal {
    enum class Part : std::uint8_t { input, output, connection };
    Part part = Part::input;
    AVMediaType mediaType = AVMediaType::video;

    bool operator==(const VirtualSessionRefusal&) const = default;
};

/// How capture sessions are.
struct VirtualSessionConditions {
    /// By how much their clock is behind the host clock; absent: they have none, and stamp with the time since their
    /// start.
    std::optional<std::chrono::nanoseconds> clockOffset{std::chrono::nanoseconds(0)};
    std::optional<VirtualSessionRefusal> refusal;
};

/// What is plugged in, in the order of plugging. The words of a script change it; operations on a device that isn't
/// there do nothing. Observers are told on the thread that makes the change. Any thread.
class VirtualCaptureDevices final : public AVCaptureDevices,
                                    public std::enable_shared_from_this<VirtualCaptureDevices> {
  public:
    /// Sessions run on `clock`; what is seen and heard in rooms is told from now on.
    explicit VirtualCaptureDevices(std::shared_ptr<HostClock> clock)
        : clock_(std::move(clock)), origin_(clock_->now()) {}

    const std::shared_ptr<HostClock>& clock() const { return clock_; }
    std::chrono::nanoseconds origin() const { return origin_; }

    std::shared_ptr<AVCaptureDeviceDiscoverySession> makeDiscoverySession(std::vector<AVCaptureDeviceType> deviceTypes,
                                                                          AVMediaType mediaType) override;
    /// What `setDefault` has said, else the first one that is connected.
    std::string defaultDeviceID(AVMediaType mediaType) override;
    std::shared_ptr<AVCaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override;
    /// Throws also for a device that another program has to itself.
    AVCaptureDeviceInput makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) override;
    std::shared_ptr<AVCaptureSession> makeCaptureSession() override;

    /// A new device, or one in the place of the one with the same id.
    void plug(VirtualDevice device);
    void unplug(const std::string& uniqueID);
    void rename(const std::string& uniqueID, const std::string& localizedName);
    void setConnected(const std::string& uniqueID, bool isConnected);
    void setSuspended(const std::string& uniqueID, bool isSuspended);
    void setOccupied(const std::string& uniqueID, bool isOccupied);
    void setPairing(const std::string& uniqueID, AVCaptureDevicePairing pairing);
    /// Suspends what is built in, or wakes it.
    void setBuiltInSuspended(bool isSuspended);
    void setDefault(AVMediaType mediaType, const std::string& uniqueID);
    /// What the microphone or phone with this id hears. It stays as it is while the device is unplugged.
    VirtualMicrophone microphone(const std::string& uniqueID) const;
    void changeMicrophone(const std::string& uniqueID, const std::function<void(VirtualMicrophone&)>& change);
    /// What the camera with this id sees, or the phone shows. Likewise.
    VirtualCamera camera(const std::string& uniqueID) const;
    void changeCamera(const std::string& uniqueID, const std::function<void(VirtualCamera&)>& change);
    /// How sessions are that are made from now on.
    VirtualSessionConditions sessionConditions() const;
    void changeSessions(const std::function<void(VirtualSessionConditions&)>& change);
    /// Whether the device is listed, connected and paired, and not suspended.
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
    std::map<std::string, VirtualCamera> cameras_ ZV_GUARDED_BY(mutex_);
    VirtualSessionConditions sessionConditions_ ZV_GUARDED_BY(mutex_);
    std::map<AVMediaType, std::string> defaults_ ZV_GUARDED_BY(mutex_);
    bool showsPhones_ ZV_GUARDED_BY(mutex_) = false;
    NSKeyValueObservers<AVMediaType> observers_;  // of the lists, with the media type whose list has changed
};

}  // namespace zorvane
