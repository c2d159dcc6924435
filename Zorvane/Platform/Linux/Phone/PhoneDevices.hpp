// The screens of phones as capture devices.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"

namespace zorvane {

class PhoneRoster;
class PhoneWatch;

/// Phones and tablets that are attached by cable, found through the desktop's service for them. A session says
/// `initial` once the phones that are there have been asked, which may be after it was made. The first session starts
/// the watch. Any thread; nothing here waits for a phone.
class PhoneDevices final : public AVCaptureDevices {
  public:
    /// `service` is the socket to use; absent: the one that the environment names when the first session is made.
    explicit PhoneDevices(std::optional<std::filesystem::path> service = std::nullopt);
    ~PhoneDevices() override;

    std::shared_ptr<AVCaptureDeviceDiscoverySession> makeDiscoverySession(std::vector<AVCaptureDeviceType> deviceTypes,
                                                                          AVMediaType mediaType) override;
    /// There is no main phone.
    std::string defaultDeviceID(AVMediaType) override { return {}; }

  private:
    const std::optional<std::filesystem::path> service_;
    const std::shared_ptr<PhoneRoster> roster_;
    Mutex mutex_;
    std::unique_ptr<PhoneWatch> watch_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
