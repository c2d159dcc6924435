// Keeps an input of sound with one microphone.
#pragma once

#include <exception>
#include <functional>
#include <memory>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceList.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundGraph.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundInput.hpp"

namespace zorvane {

/// Wires the input to the device's node, whenever there is one, and to nothing else. The list of devices says which
/// node is the device's, by its serial number; the graph says which ports the node has.
class PipeWireMicrophone {
  public:
    /// Null: there is a node again. Else why there is none. On the session's thread.
    using PresenceHandler = std::function<void(std::exception_ptr reason)>;

    PipeWireMicrophone(std::shared_ptr<PipeWireSession> session, std::shared_ptr<PipeWireDeviceList> list,
                       std::shared_ptr<const PipeWireCaptureDevice> device, std::unique_ptr<PipeWireSoundInput> input,
                       PresenceHandler handler);
    PipeWireMicrophone(const PipeWireMicrophone&) = delete;
    PipeWireMicrophone& operator=(const PipeWireMicrophone&) = delete;
    /// After it the input gives no sound. The handler may be running still.
    ~PipeWireMicrophone();

  private:
    class Wiring;

    const std::shared_ptr<PipeWireSession> session_;
    const std::shared_ptr<Wiring> wiring_;
    std::shared_ptr<PipeWireSoundGraph> graph_;
    NSKeyValueObservation listObservation_;
};

/// The wires from a microphone's ports to an input's channels, in their order; a single port goes to all. A microphone
/// that exists in software only gives what is played into it, so that all its outputs are monitors.
PipeWireSoundSources soundOfMicrophone(const PipeWireSoundNode& node, std::uint32_t channelCount);

}  // namespace zorvane
