// Keeps the objects of phones and tablets current.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Internal/Discovery/AVCaptureDeviceDiscovery.hpp"
#include "Zorvane/Internal/Discovery/KnownDevices.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Sources/ZVAppleDevice.hpp"

namespace zorvane {

/// Switches the screens of phones on, follows them and keeps one object for each one ever seen, in the order of
/// `KnownDevices`. Updates happen on the main executor. Reading is safe on any thread.
class AppleDeviceDiscovery : public std::enable_shared_from_this<AppleDeviceDiscovery> {
  public:
    using List = ZVAppleDevice::List;

    /// The current world's, started.
    static std::shared_ptr<AppleDeviceDiscovery> shared();

    AppleDeviceDiscovery();
    ~AppleDeviceDiscovery();

    /// Reads the devices for the first time, and begins to follow them.
    void start();

    List devices() const { return devices_.list(); }
    AsyncStream<List> updates() const { return devices_.publisher().values(); }
    /// The device with this id; null if there never was one.
    std::shared_ptr<ZVAppleDevice> find(std::string_view id) const { return devices_.find(id); }

    /// Ends when the system has told of the devices that were there at the start; after a second at the latest.
    Task<> waitUntilListed() const;

    /// Reads the devices now; the update follows on the main executor. On the strand only.
    void refresh();

  private:
    using Devices = AVCaptureDeviceDiscovery::Devices;

    void enableDAL();
    void apply(const Devices& muxed);
    bool put(const AVCaptureDevice& seen, const Devices& muxed);

    const Logger logger_;
    const std::shared_ptr<Executor> strand_;  // reads here, so that updates come in the order of reading
    AVCaptureDeviceDiscovery avDiscovery_;
    KnownDevices<ZVAppleDevice> devices_;
    CurrentValueSubject<bool> isListed_{false};
    TaskHandle<> avDevicesTask_;
};

}  // namespace zorvane
