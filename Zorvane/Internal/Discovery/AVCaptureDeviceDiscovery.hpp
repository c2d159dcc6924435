// Watches capture devices on behalf of a discovery.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"

namespace zorvane {

/// Follows the devices of some sessions, and the suspension and pairing of each, and signals whenever something may
/// have changed. Signals that nobody has taken yet become one. Any thread.
class AVCaptureDeviceDiscovery {
  public:
    using Devices = std::vector<std::shared_ptr<AVCaptureDevice>>;
    using Sessions = std::vector<std::shared_ptr<AVCaptureDeviceDiscoverySession>>;
    struct Signal {};

    /// Begins at once. `owner` is the discovery's name, which the category in the log begins with. `strand` is where
    /// the observations of a changed list are renewed.
    AVCaptureDeviceDiscovery(std::string_view owner, const Sessions& sessions, const std::shared_ptr<Executor>& strand);
    ~AVCaptureDeviceDiscovery();

    /// The present devices of one session.
    Devices devices(std::size_t session = 0) const;

    /// The signals; there is one stream, so this is called once.
    AsyncStream<Signal> updates() { return std::move(stream_.first); }

  private:
    class Observation;

    const Logger logger_;
    std::pair<AsyncStream<Signal>, AsyncStreamSource<Signal>> stream_;
    std::vector<std::shared_ptr<Observation>> observations_;  // one per session
};

/// Calls `refresh()` of the discovery after each signal, on the executor of the task.
template <class Discovery>
Task<> refreshOnUpdates(std::weak_ptr<Discovery> weak, AsyncStream<AVCaptureDeviceDiscovery::Signal> updates,
                        Logger logger) {
    while (const auto signal = co_await updates.next()) {
        logger.debug("AVCaptureDeviceDiscovery update");
        if (const auto discovery = weak.lock()) {
            discovery->refresh();
        }
    }
}

/// A device for the log: "modelID:", ",manufacturer:", ",deviceType:" and ",transportType:", each with its value.
std::string debugDescription(const AVCaptureDevice& device);

}  // namespace zorvane
