// Cameras, microphones and phones as the system lists them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/Platform/CoreMedia/CMFormatDescription.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"

namespace zorvane {

class AVCaptureSession;

enum class AVCaptureDeviceType : std::uint8_t {
    builtInMicrophone,
    builtInWideAngleCamera,
    deskViewCamera,
    external,         ///< plugged in or wireless; cameras and microphones
    externalUnknown,  ///< of another kind, such as a phone's screen
};

/// How a device is attached: four letters as a number.
enum class AVCaptureDeviceTransportType : std::uint32_t {
    unknown = 0,
    builtIn = 0x626C746E,        ///< 'bltn'
    usb = 0x75736220,            ///< 'usb '
    bluetooth = 0x626C7565,      ///< 'blue'
    virtualDevice = 0x76697274,  ///< 'virt'
};

/// How far a phone trusts this machine.
enum class AVCaptureDevicePairing : std::uint8_t {
    notApplicable,         ///< no pairing is needed, or it is done and the device delivers
    notPaired,             ///< the user has to confirm on the device
    pairedNeedsConnect,    ///< trusted, but not attached
    pairedNeedsReconnect,  ///< trusted and attached, but it has to be plugged in again
};

/// One device. The properties but `isConnected`, `isSuspended` and `pairing` never change. Any thread.
class AVCaptureDevice {
  public:
    virtual ~AVCaptureDevice() = default;

    /// Stable over unplugging, restarts of services and of the machine.
    virtual std::string uniqueID() const = 0;
    virtual std::string localizedName() const = 0;  ///< for people
    virtual std::string modelID() const = 0;        ///< empty when unknown
    virtual std::string manufacturer() const = 0;   ///< empty when unknown
    virtual AVCaptureDeviceType deviceType() const = 0;
    virtual AVCaptureDeviceTransportType transportType() const = 0;
    virtual bool isConnected() const = 0;
    /// Present, but gives nothing for now: its lid is closed, its jack is empty, its switch is off.
    virtual bool isSuspended() const = 0;
    virtual AVCaptureDevicePairing pairing() const = 0;
    /// Whether another program captures from it. False where the system doesn't tell.
    virtual bool isInUseByAnotherApplication() const { return false; }
    /// The format that the device delivers in now, as far as it is known: of a microphone its rate and channels, of a
    /// camera or phone the size of its pictures.
    virtual CMFormatDescription activeFormat() const { return {}; }
    /// The shortest time from picture to picture in that format. Not numeric where the device doesn't say, and of
    /// devices without pictures.
    virtual CMTime activeVideoMinFrameDuration() const { return kCMTimeInvalid; }

    /// Calls `handler` after each change of `isSuspended` or `pairing`, on any thread; it only signals.
    virtual NSKeyValueObservation observeSuspended(std::function<void()> handler) = 0;
};

/// A device that was opened for capture.
struct AVCaptureDeviceInput {
    std::shared_ptr<AVCaptureDevice> device;
};

/// The devices of some types and one media type, live. Any thread.
class AVCaptureDeviceDiscoverySession {
  public:
    enum class ChangeKind : std::uint8_t { initial, setting };

    virtual ~AVCaptureDeviceDiscoverySession() = default;

    /// The devices now, in the system's order. The same device is the same object for as long as it is listed.
    virtual std::vector<std::shared_ptr<AVCaptureDevice>> devices() const = 0;

    /// Calls `handler` once with `initial`, possibly inside this call, and after each change of the list with
    /// `setting`, on any thread; it only signals.
    virtual NSKeyValueObservation observeDevices(std::function<void(ChangeKind kind)> handler) = 0;
};

/// Where the sessions come from; one per platform. Any thread.
class AVCaptureDevices {
  public:
    virtual ~AVCaptureDevices() = default;

    /// A session that follows the devices of these types. A service that isn't there has no devices; when it comes,
    /// they appear, and when it comes back, they are the ones from before.
    virtual std::shared_ptr<AVCaptureDeviceDiscoverySession> makeDiscoverySession(
        std::vector<AVCaptureDeviceType> deviceTypes, AVMediaType mediaType) = 0;

    /// The system's main device for a media type, as its user has chosen it; empty when there is none or it can't be
    /// told.
    virtual std::string defaultDeviceID(AVMediaType mediaType) = 0;

    /// The connected device with this id, or null.
    virtual std::shared_ptr<AVCaptureDevice> deviceWithUniqueID(const std::string& uniqueID) = 0;

    /// Opens a device. Throws `NSError` when it is gone or refuses.
    virtual AVCaptureDeviceInput makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) = 0;

    virtual std::shared_ptr<AVCaptureSession> makeCaptureSession() = 0;
};

}  // namespace zorvane
