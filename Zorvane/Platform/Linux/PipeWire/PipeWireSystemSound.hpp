// The sound of a stream of the screen.
#pragma once

#include <exception>
#include <functional>
#include <memory>

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCAudibleProcesses.hpp"

namespace zorvane {

class AVAudioConverting;
class PipeWireSession;

/// What the system plays, or chosen processes do, as samples on the host clock. From the start on they come without a
/// break: silence where nothing plays and while PipeWire is away. What is heard is decided here alone, whatever
/// PipeWire's session manager does: where no chosen process plays there is silence.
///
///     made --start--> running --stop--> ended
///
/// `start` and `stop` may be called on any thread but that of a sample.
class PipeWireSystemSound {
  public:
    struct Settings {
        SCAudibleProcesses audible;
        AVAudioFormat format;  ///< of the samples, in floats
    };

    struct Handlers {
        /// On a thread of the sound's own; not called once `stop` has come back.
        std::function<void(const CMSampleBuffer& sample)> sample;
        /// PipeWire has ended, for this reason; null: it is back. On PipeWire's thread, where the sound may be stopped.
        /// One call may be under way when `stop` comes back.
        std::function<void(std::exception_ptr absence)> availability;
    };

    using Completion = std::function<void(std::exception_ptr error)>;

    PipeWireSystemSound(std::shared_ptr<PipeWireSession> session, std::shared_ptr<AVAudioConverting> converting,
                        Settings settings, Handlers handlers);
    PipeWireSystemSound(const PipeWireSystemSound&) = delete;
    PipeWireSystemSound& operator=(const PipeWireSystemSound&) = delete;
    /// Stops it.
    ~PipeWireSystemSound();

    /// The completion is called exactly once, on any thread, possibly before this returns: when PipeWire has answered,
    /// or with an `NSError` that says why there is no sound; it is to be stopped then all the same. Once.
    void start(Completion completion);

    /// A start under way completes with an error, and so does one that comes later.
    void stop();

  private:
    class State;

    const std::shared_ptr<State> state_;
};

}  // namespace zorvane
