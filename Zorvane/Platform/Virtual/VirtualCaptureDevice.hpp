// A camera, a microphone or a phone of a virtual desktop.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"

namespace zorvane {

/// What a device is, for a script to plug in:
///
///     desktop->at(1).plugDevice(VirtualDevice::camera("cam", "Desk Camera"));
struct VirtualDevice {
    AVMediaType mediaType = AVMediaType::video;
    AVCaptureDeviceType deviceType = AVCaptureDeviceType::external;
    AVCaptureDeviceTransportType transportType = AVCaptureDeviceTransportType::usb;
    std::string uniqueID;
    std::string localizedName;
    std::string modelID = "Virtual Model";
    std::string manufacturer = "Virtual Maker";
    AVAudioFormat soundFormat{AVAudioCommonFormat::float32, 48000, 1};  ///< of a microphone or phone
    CMVideoDimensions pictureSize{640, 480};                            ///< of a camera or phone

    static VirtualDevice camera(std::string uniqueID, std::string localizedName);
    static VirtualDevice builtInCamera(std::string uniqueID, std::string localizedName);
    static VirtualDevice deskViewCamera(std::string uniqueID, std::string localizedName);
    static VirtualDevice microphone(std::string uniqueID, std::string localizedName,
                                    const AVAudioFormat& soundFormat = {AVAudioCommonFormat::float32, 48000, 1});
    static VirtualDevice builtInMicrophone(std::string uniqueID, std::string localizedName);
    /// Gives its screen, which stands upright, and its sound. Shows up once the screens of phones are switched on.
    static VirtualDevice phone(std::string uniqueID, std::string localizedName);
};

/// The live device, as the library sees it.
class VirtualCaptureDevice final : public AVCaptureDevice {
  public:
    explicit VirtualCaptureDevice(VirtualDevice device)
        : device_(std::move(device)), soundFormat_(device_.soundFormat), pictureSize_(device_.pictureSize) {}

    const VirtualDevice& description() const { return device_; }

    std::string uniqueID() const override { return device_.uniqueID; }
    std::string localizedName() const override { return device_.localizedName; }
    std::string modelID() const override { return device_.modelID; }
    std::string manufacturer() const override { return device_.manufacturer; }
    AVCaptureDeviceType deviceType() const override { return device_.deviceType; }
    AVCaptureDeviceTransportType transportType() const override { return device_.transportType; }
    bool isConnected() const override { return isConnected_; }
    bool isSuspended() const override { return isSuspended_; }
    AVCaptureDevicePairing pairing() const override { return pairing_; }
    bool isInUseByAnotherApplication() const override { return isOccupied_; }
    CMFormatDescription activeFormat() const override;
    CMTime activeVideoMinFrameDuration() const override;
    NSKeyValueObservation observeSuspended(std::function<void()> handler) override;

    void setConnected(bool isConnected) { isConnected_ = isConnected; }
    /// Whether another program has it to itself.
    void setOccupied(bool isOccupied) { isOccupied_ = isOccupied; }
    void setSoundFormat(const AVAudioFormat& format);
    void setPictures(const CMVideoDimensions& size, CMTime minFrameDuration);
    /// These two tell the observers.
    void setSuspended(bool isSuspended);
    void setPairing(AVCaptureDevicePairing pairing);

  private:
    const VirtualDevice device_;
    std::atomic<bool> isConnected_ = true;
    std::atomic<bool> isSuspended_ = false;
    std::atomic<bool> isOccupied_ = false;
    std::atomic<AVCaptureDevicePairing> pairing_ = AVCaptureDevicePairing::notApplicable;
    NSKeyValueObservers<> observers_;
    mutable Mutex mutex_;
    AVAudioFormat soundFormat_ ZV_GUARDED_BY(mutex_);
    CMVideoDimensions pictureSize_ ZV_GUARDED_BY(mutex_);
    CMTime minFrameDuration_ ZV_GUARDED_BY(mutex_) = kCMTimeInvalid;
};

}  // namespace zorvane
