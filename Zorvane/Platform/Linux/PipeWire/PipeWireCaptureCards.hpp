// Which cameras and microphones are the two halves of one capture card.
#pragma once

#include <cstddef>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSources.hpp"

namespace zorvane {

/// A card's halves, by their places among the sources.
struct PipeWireCardHalves {
    std::size_t camera = 0;
    std::size_t microphone = 0;
};

/// The pairs that belong together: nodes of one device of PipeWire's, and the picture and the sound of one device on
/// USB, which the kernel shows as two, if it says of itself that it takes in a signal. A webcam and its microphone look
/// the same but for that, and are no pair. No source is in two pairs.
std::vector<PipeWireCardHalves> captureCardsIn(const std::vector<PipeWireSource>& sources);

}  // namespace zorvane
