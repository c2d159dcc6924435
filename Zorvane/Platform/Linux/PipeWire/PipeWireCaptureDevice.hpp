// One camera or microphone of PipeWire.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceDescription.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

namespace zorvane {

/// Suspended means: what it listens to isn't there, such as the microphone of an empty jack. A node that PipeWire has
/// put to sleep to save power is not suspended, since it wakes when it is used; nor is a muted one, which delivers
/// silence because its user wants that.
class PipeWireCaptureDevice final : public AVCaptureDevice {
  public:
    explicit PipeWireCaptureDevice(PipeWireDeviceDescription description) : description_(std::move(description)) {}

    std::string uniqueID() const override { return description_.uniqueID; }
    std::string localizedName() const override { return description_.localizedName; }
    std::string modelID() const override { return description_.modelID; }
    std::string manufacturer() const override { return description_.manufacturer; }
    AVCaptureDeviceType deviceType() const override { return description_.deviceType; }
    AVCaptureDeviceTransportType transportType() const override { return description_.transportType; }
    bool isConnected() const override;
    bool isSuspended() const override;
    AVCaptureDevicePairing pairing() const override { return AVCaptureDevicePairing::notApplicable; }
    bool isInUseByAnotherApplication() const override;
    /// It stays what it was when the device goes.
    CMFormatDescription activeFormat() const override;
    CMTime activeVideoMinFrameDuration() const override;
    NSKeyValueObservation observeSuspended(std::function<void()> handler) override;

    const PipeWireDeviceDescription& description() const { return description_; }

    /// Of the node that is the device now; 0 while it is away.
    std::uint64_t nodeSerial() const;
    /// What its pictures are taken from; nothing while it is away, and of one without pictures.
    std::optional<PipeWireVideoSource> videoSource() const;
    /// Why it gives nothing, in its own words; empty while it can.
    std::string error() const;
    /// Whether it is a camera all of whose formats are strange here.
    bool isUnreadable() const;

    /// Takes in what the source says now. Tells the observers if the device's being suspended changes.
    void update(const PipeWireSource& source);
    /// A device that is gone is not suspended.
    void setGone();

  private:
    enum class Presence : std::uint8_t { connected, suspended, gone };
    struct State {
        Presence presence = Presence::gone;
        std::uint64_t nodeSerial = 0;
        PipeWireNodeFormat format;
        std::uint64_t outputPort = 0;
        std::optional<PipeWireVideoFormat> videoFormat;
        bool isUnreadable = false;
        std::string error;
        bool isUsedByOthers = false;
    };

    State state() const;
    void setState(const State& now);

    const PipeWireDeviceDescription description_;
    NSKeyValueObservers<> observers_;
    mutable Mutex mutex_;
    State state_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
