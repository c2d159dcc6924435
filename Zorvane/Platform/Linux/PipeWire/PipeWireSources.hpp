// Cameras and microphones as PipeWire describes them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireNodeFormat.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireProperties.hpp"

namespace zorvane {

/// One node that gives sound or pictures.
struct PipeWireSource {
    std::uint32_t nodeID = 0;  ///< while it lives; given to another one later
    AVMediaType mediaType = AVMediaType::audio;
    PipeWireProperties node;
    PipeWireProperties card;      ///< of the hardware behind it; empty if there is none
    bool isCutOff = false;        ///< nothing is plugged in where it listens
    PipeWireNodeFormat format;    ///< of sound
    bool isUsedByOthers = false;  ///< another program than this one captures from it
};

/// All of them at one moment.
struct PipeWireSources {
    std::vector<PipeWireSource> sources;              ///< in the order in which they came
    std::map<AVMediaType, std::string> defaultNodes;  ///< names of the preferred nodes, where there are such
};

}  // namespace zorvane
