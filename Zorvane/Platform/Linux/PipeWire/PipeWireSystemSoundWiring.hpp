// Which ports the sound of a stream is taken from.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundSources.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCAudibleProcesses.hpp"

namespace zorvane {

/// If all processes are heard, that is the monitor of the default sink, whichever that is at the time: what people
/// hear. Otherwise it is the outputs of each stream that a process in question plays, to whatever sink, and nothing
/// while none does.
///
/// A stream counts from the moment on at which it plays to a sink, since it is not before that known when it is heard;
/// what the user then moves to another sink goes on without a break. Whose it is is asked once. Loopbacks and filters
/// give what others have played already, and are no streams here.
///
/// The sound of streams that play to sinks of different latencies is timed by that of the oldest stream.
///
/// One thread at a time.
class PipeWireSystemSoundWiring {
  public:
    /// As `processLineage` at the moment at which the processes were chosen.
    using Lineage = std::function<std::vector<std::int32_t>(std::int32_t processID)>;

    PipeWireSystemSoundWiring(SCAudibleProcesses audible, Lineage lineage);

    /// The channels are those of `systemSoundChannels`. Scenes come in their order.
    PipeWireSoundSources sourcesIn(const PipeWireSoundScene& scene);

  private:
    struct Stream {
        bool isAudible = false;
        bool hasPlayed = false;
    };

    PipeWireSoundSources streamsIn(const PipeWireSoundScene& scene);
    std::map<std::string, Stream> currentStreams(const PipeWireSoundScene& scene) const;
    bool isAudible(const PipeWireSoundNode& node) const;

    const SCAudibleProcesses audible_;
    const Lineage lineage_;
    std::map<std::string, Stream> streams_;  // by the serial numbers of their nodes
};

}  // namespace zorvane
