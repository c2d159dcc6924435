// A node of ours that takes the pictures of what it is told to, and of nothing else.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoTap.hpp"

namespace zorvane {

class PipeWireSession;

/// The counterpart of `PipeWireSoundInput`, and like it nothing that the session manager connects.
///
///     made --start--> running --stop--> ended
///
/// While it runs: PipeWire's thread passes each buffer on to a thread of the input's own, which converts straight out
/// of it into a picture of a pool, gives the buffer back, and hands the picture to the sink. Where that takes too long,
/// pictures that wait are dropped, the oldest first. When PipeWire ends, the pictures end; when it is back, the input
/// has no source and waits for a new one. `start` and `stop` may be called on any thread, not inside the sink, one at a
/// time.
class PipeWireVideoInput {
  public:
    /// Takes a picture, later than the last one, on the host clock. On the input's own thread.
    using Sink = std::function<void(const CMSampleBuffer& sample)>;
    /// On the session's thread.
    using FlowHandler = PipeWireVideoTap::FlowHandler;

    /// `name` is for people, in lists of what records. `converting` is used while it runs.
    PipeWireVideoInput(std::shared_ptr<PipeWireSession> session, std::string name,
                       std::shared_ptr<AVVideoConverting> converting, Sink sink);
    PipeWireVideoInput(const PipeWireVideoInput&) = delete;
    PipeWireVideoInput& operator=(const PipeWireVideoInput&) = delete;
    ~PipeWireVideoInput();

    /// `flowChanged` is called for the source of the moment. One that fails is tried again after two seconds, and
    /// so on until a picture comes: nobody tells when a program that doesn't use PipeWire lets go of a camera.
    void start(FlowHandler flowChanged);
    /// After it the sink is not called.
    void stop();

    /// On the session's thread, while running; else it does nothing. The same source as before goes on as it is.
    void setSource(const std::optional<PipeWireVideoSource>& source);
    /// The source says of itself that it has failed. Likewise.
    void sourceFailed(const std::string& reason);

  private:
    class State;

    const std::shared_ptr<PipeWireSession> session_;
    const std::shared_ptr<State> state_;
};

}  // namespace zorvane
