// The routes of a sound card: which of its jacks and built-in microphones are there to be heard.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

struct spa_pod;

namespace zorvane {

/// A way into or out of a card.
struct PipeWireRoute {
    enum class Direction : std::uint8_t { input, output };
    enum class Availability : std::uint8_t { unknown, no, yes };

    Direction direction = Direction::input;
    Availability availability = Availability::unknown;  ///< `no` for an empty jack; many cards can't tell
    std::vector<int> cardDevices;                       ///< the card's numbers for the nodes that it can feed

    bool operator==(const PipeWireRoute&) const = default;
};

/// A `Route` or `EnumRoute` parameter; nothing if it is none.
std::optional<PipeWireRoute> parseRoute(const spa_pod* parameter);

/// The routes of one card.
struct PipeWireRoutes {
    std::vector<PipeWireRoute> active;    ///< at most one for each node and direction
    std::vector<PipeWireRoute> possible;  ///< all there are

    /// Whether the input node with this number on the card has nothing to listen to: its active route is unavailable,
    /// or it has no active one and all possible ones are unavailable. A node without routes always has something.
    bool isCutOff(int cardDevice) const;
};

}  // namespace zorvane
