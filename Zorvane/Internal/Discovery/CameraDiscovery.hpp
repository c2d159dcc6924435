// Keeps the camera objects current.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Discovery/AVCaptureDeviceDiscovery.hpp"
#include "Zorvane/Internal/Discovery/KnownDevices.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Sources/ZVCamera.hpp"

namespace zorvane {

class AVCaptureDevices;

/// Follows the system's cameras and keeps one object for each one ever seen, in the order of `KnownDevices`. Updates
/// happen on the main executor. Reading is safe on any thread.
class CameraDiscovery : public std::enable_shared_from_this<CameraDiscovery> {
  public:
    using List = ZVCamera::List;

    /// The current world's, started.
    static std::shared_ptr<CameraDiscovery> shared();

    CameraDiscovery();
    ~CameraDiscovery();

    /// Reads the cameras for the first time, and begins to follow them.
    void start();

    /// Desk view cameras included.
    List cameras() const { return devices_.list(); }
    ZVPublisher<List> publisher() const { return devices_.publisher(); }
    /// The camera with this id; null if there never was one.
    std::shared_ptr<ZVCamera> find(std::string_view id) const { return devices_.find(id); }
    /// See `ZVCamera::preferred`.
    std::shared_ptr<ZVCamera> getPreferred() const;

    /// Reads the cameras and the user's preferences again, soon. Any thread.
    void triggerUpdate();

    /// Reads them now; the update follows on the main executor. On the strand only.
    void refresh();

  private:
    using Devices = AVCaptureDeviceDiscovery::Devices;

    struct Reading {
        Devices baseCams;
        Devices deskView;
        std::vector<std::string> preferredIDs;
        bool suspendsByLid = false;  ///< whether a built-in camera is suspended because its lid is closed
    };

    Reading read() const;
    void apply(const Reading& reading);
    bool put(const AVCaptureDevice& seen, bool isDeskView, bool suspendsByLid);

    const Logger logger_;
    const std::shared_ptr<Executor> strand_;  // reads here, so that updates come in the order of reading
    const std::shared_ptr<AVCaptureDevices> captureDevices_;
    AVCaptureDeviceDiscovery baseCamsDiscovery_;
    AVCaptureDeviceDiscovery deskViewDiscovery_;
    KnownDevices<ZVCamera> devices_;
    TaskHandle<> baseDevicesTask_;
    TaskHandle<> deskDevicesTask_;
};

}  // namespace zorvane
