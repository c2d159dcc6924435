// Cameras and microphones as PipeWire describes them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireNodeFormat.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireProperties.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

namespace zorvane {

/// One node that gives sound or pictures.
struct PipeWireSource {
    std::uint32_t nodeID = 0;  ///< while it lives; given to another one later
    AVMediaType mediaType = AVMediaType::audio;
    PipeWireProperties node;
    PipeWireProperties card;    ///< of the hardware behind it; empty if there is none
    bool isCutOff = false;      ///< nothing is plugged in where it listens
    PipeWireNodeFormat format;  ///< of sound
    std::vector<PipeWireVideoOffer> videoOffers;
    std::uint64_t outputPort = 0;  ///< the serial number of the one that gives pictures; 0 without one
    std::string error;             ///< why it doesn't work; empty while it does
    bool isUsedByOthers = false;   ///< another program than this one captures from it
};

/// All of them at one moment.
struct PipeWireSources {
    bool isConnected = false;                         ///< else PipeWire isn't there
    std::vector<PipeWireSource> sources;              ///< in the order in which they came
    std::map<AVMediaType, std::string> defaultNodes;  ///< names of the preferred nodes, where there are such
};

}  // namespace zorvane
