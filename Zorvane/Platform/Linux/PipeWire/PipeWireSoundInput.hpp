// A node of ours that hears what it was wired to and nothing else.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Zorvane/Platform/AVFoundation/AVAudioConverter.hpp"
#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundSources.hpp"

namespace zorvane {

class PipeWireSession;

/// PipeWire's session manager, left to itself, gives a stream that loses its source another one: the microphone for an
/// application that ended, without a word. So this is no stream that somebody connects. It is a node with one port for
/// each channel, it is marked as not to be connected, and the links to its ports are made here, port by port. A link
/// goes when its source goes, and nothing takes its place. A link that somebody else makes to it is taken away.
///
///     made --start--> running --stop--> ended
///
/// While it runs: when PipeWire ends, its sound ends; when PipeWire is back, the node is made anew, without sources,
/// and waits for new ones. `start` and `stop` may be called on any thread, not inside the sink, one at a time.
class PipeWireSoundInput {
  public:
    /// Takes a sample: a block in the output's format, on the host clock, whose frames join the last one's. On the
    /// input's own thread.
    using Sink = std::function<void(const CMSampleBuffer& sample)>;

    /// What is given while there is nothing to hear: no source, none that runs, no PipeWire.
    enum class Idle : std::uint8_t {
        nothing,
        silence,  ///< 100 ms later than sound would be
    };

    struct Settings {
        std::string name;  ///< for people, in lists of what records
        AVAudioFormat output;
        std::optional<std::uint32_t> channelCount;  ///< of the input, mixed to the output's; as many as those if absent
        Idle idle = Idle::nothing;
    };

    /// `converting` is used during construction and while it runs.
    PipeWireSoundInput(std::shared_ptr<PipeWireSession> session, Settings settings,
                       std::shared_ptr<AVAudioConverting> converting, Sink sink);
    PipeWireSoundInput(const PipeWireSoundInput&) = delete;
    PipeWireSoundInput& operator=(const PipeWireSoundInput&) = delete;
    ~PipeWireSoundInput();

    std::uint32_t channelCount() const;

    void start();
    /// After it the sink is not called.
    void stop();

    /// On the session's thread, as inside a `PipeWireSoundGraph::Observer`, while running; else it does nothing. Only
    /// what is new is linked and only what is left out is unlinked; all other sound goes on.
    void setSources(const PipeWireSoundSources& sources);

  private:
    class State;

    const std::shared_ptr<PipeWireSession> session_;
    const std::shared_ptr<State> state_;
};

}  // namespace zorvane
