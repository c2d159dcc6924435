// Which of our channels a channel of somebody's sound goes to.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace zorvane {

/// What the sound of a stream is captured in, before it is mixed down to what was asked for: all that common speakers
/// have, so that nobody's centre or surround gets lost. In the order in which converters expect eight channels.
inline constexpr std::array<std::string_view, 8> systemSoundChannels{"FL", "FR", "FC", "LFE", "RL", "RR", "SL", "SR"};

/// Indices into `systemSoundChannels` for a port's channel among as many as its node has. A sound without a side goes
/// to both sides. One that isn't known by its name, such as "AUX1", is taken for the left or right one by its number;
/// that of a single channel goes to both sides.
std::vector<std::uint32_t> systemSoundChannelsFor(std::string_view channel, std::size_t channelsOfNode);

}  // namespace zorvane
