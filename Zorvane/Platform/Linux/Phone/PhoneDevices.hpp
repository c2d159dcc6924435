// The screens of phones as capture devices.
#pragma once

#include <memory>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"

namespace zorvane {

class PhoneRoster;
class PhoneWatch;

/// Phones and tablets that are attached by cable, found through the desktop's service for them: the one that
/// `USBMUXD_SOCKET_ADDRESS` names, else the usual one. A session says `initial` once the phones that are there have
/// been asked, which may be after it was made. The first session starts the watch. Any thread; nothing here waits for a
/// phone.
class PhoneDevices final : public AVCaptureDevices {
  public:
    PhoneDevices();
    ~PhoneDevices() override;

    std::shared_ptr<AVCaptureDeviceDiscoverySession> makeDiscoverySession(std::vector<AVCaptureDeviceType> deviceTypes,
                                                                          AVMediaType mediaType) override;
    /// There is no main phone.
    std::string defaultDeviceID(AVMediaType) override { return {}; }
    /// Among those that a discovery session has found.
    std::shared_ptr<AVCaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override;
    /// Throws always, and says what to do instead: a phone gives its screen to a program on this system by HDMI only.
    AVCaptureDeviceInput makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) override;
    std::shared_ptr<AVCaptureSession> makeCaptureSession() override { return nullptr; }

  private:
    const std::shared_ptr<PhoneRoster> roster_;
    Mutex mutex_;
    std::unique_ptr<PhoneWatch> watch_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
