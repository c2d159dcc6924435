// Keeps the microphone objects current.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Discovery/AVCaptureDeviceDiscovery.hpp"
#include "Zorvane/Internal/Discovery/KnownDevices.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Sources/ZVMicrophone.hpp"

namespace zorvane {

class AVCaptureDevices;

/// Follows the system's microphones and keeps one object for each one ever seen, in the order of `KnownDevices`. The
/// built-in camera shows whether the lid is closed. Updates happen on the main executor. Reading is safe on any thread.
class MicrophoneDiscovery : public std::enable_shared_from_this<MicrophoneDiscovery> {
  public:
    using List = ZVMicrophone::List;

    /// The current world's, started.
    static std::shared_ptr<MicrophoneDiscovery> shared();

    MicrophoneDiscovery();
    ~MicrophoneDiscovery();

    /// Reads the microphones for the first time, and begins to follow them.
    void start();

    List microphones() const { return devices_.list(); }
    AsyncStream<List> updates() const { return devices_.publisher().values(); }
    /// The microphone with this id; null if there never was one.
    std::shared_ptr<ZVMicrophone> find(std::string_view id) const { return devices_.find(id); }
    /// See `ZVMicrophone::preferred`.
    std::shared_ptr<ZVMicrophone> getPreferred() const;

    /// Reads the microphones and the user's preferences again, soon. Any thread.
    void triggerUpdate();

    /// Reads them now; the update follows on the main executor. On the strand only.
    void refresh();

  private:
    using Devices = AVCaptureDeviceDiscovery::Devices;

    /// What the lid may do to the built-in microphones.
    enum class Lid {
        open,               ///< or none
        closed,             ///< they are all silent
        closedIfSuspended,  ///< those that are suspended are silent because of it
    };

    struct Reading {
        Devices microphones;
        std::vector<std::string> preferredIDs;
        Lid lid = Lid::open;
    };

    Reading read() const;
    Lid readLid() const;
    void apply(const Reading& reading);
    bool put(const AVCaptureDevice& seen, Lid lid);
    static ZVMicrophone::Availability availabilityOf(const AVCaptureDevice& device, Lid lid);

    const Logger logger_;
    const std::shared_ptr<Executor> strand_;  // reads here, so that updates come in the order of reading
    const std::shared_ptr<AVCaptureDevices> captureDevices_;
    AVCaptureDeviceDiscovery avDiscovery_;  // the sessions of the microphones and of the built-in camera
    KnownDevices<ZVMicrophone> devices_;
    TaskHandle<> avDevicesTask_;
};

}  // namespace zorvane
