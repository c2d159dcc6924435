// Keeps an input of pictures with one camera.
#pragma once

#include <exception>
#include <functional>
#include <memory>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceList.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoInput.hpp"

namespace zorvane {

/// Gives the input the device's port as its source, whenever there is one, and nothing else. The list of devices says
/// which one that is, by its serial number.
class PipeWireCamera {
  public:
    /// Null: the camera is there again. Else why it gives no pictures. On the session's thread.
    using PresenceHandler = std::function<void(std::exception_ptr reason)>;

    PipeWireCamera(std::shared_ptr<PipeWireSession> session, std::shared_ptr<PipeWireDeviceList> list,
                   std::shared_ptr<const PipeWireCaptureDevice> device, std::unique_ptr<PipeWireVideoInput> input,
                   PresenceHandler handler);
    PipeWireCamera(const PipeWireCamera&) = delete;
    PipeWireCamera& operator=(const PipeWireCamera&) = delete;
    /// After it the input gives no pictures. The handler may be running still.
    ~PipeWireCamera();

  private:
    class Following;

    const std::shared_ptr<PipeWireSession> session_;
    const std::shared_ptr<Following> following_;
    NSKeyValueObservation listObservation_;
};

}  // namespace zorvane
