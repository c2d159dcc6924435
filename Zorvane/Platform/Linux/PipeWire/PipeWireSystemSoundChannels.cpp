#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSoundChannels.hpp"

#include <algorithm>
#include <charconv>
#include <optional>

namespace zorvane {
namespace {

enum Channel : std::uint32_t { FL, FR, FC, LFE, RL, RR, SL, SR };

/// What the eight don't have is heard from the ones next to it.
struct Neighbours {
    std::string_view channel;
    std::array<Channel, 2> nearest;  // the same one twice if there is one
};

constexpr Neighbours neighbours[] = {
    {"MONO", {FL, FR}},   {"RC", {RL, RR}},     {"FLC", {FL, FC}},    {"FRC", {FR, FC}}, {"FLW", {FL, SL}},
    {"FRW", {FR, SR}},    {"FLH", {FL, FL}},    {"FCH", {FC, FC}},    {"FRH", {FR, FR}}, {"TC", {FL, FR}},
    {"TFL", {FL, FL}},    {"TFC", {FC, FC}},    {"TFR", {FR, FR}},    {"TRL", {RL, RL}}, {"TRC", {RL, RR}},
    {"TRR", {RR, RR}},    {"TSL", {SL, SL}},    {"TSR", {SR, SR}},    {"RLC", {RL, RL}}, {"RRC", {RR, RR}},
    {"LFE2", {LFE, LFE}}, {"LLFE", {LFE, LFE}}, {"RLFE", {LFE, LFE}},
};

std::optional<std::uint32_t> numberAtEnd(std::string_view name) {
    const std::size_t last = name.find_last_not_of("0123456789");
    const std::string_view digits = last == name.npos ? name : name.substr(last + 1);
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc{} && !digits.empty() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::vector<std::uint32_t> systemSoundChannelsFor(std::string_view channel, std::size_t channelsOfNode) {
    const auto same = std::ranges::find(systemSoundChannels, channel);
    if (same != systemSoundChannels.end()) {
        return {static_cast<std::uint32_t>(same - systemSoundChannels.begin())};
    }
    const auto near = std::ranges::find(neighbours, channel, &Neighbours::channel);
    if (near != std::end(neighbours)) {
        const auto [first, second] = near->nearest;
        return first == second ? std::vector<std::uint32_t>{first} : std::vector<std::uint32_t>{first, second};
    }
    const auto number = numberAtEnd(channel);
    if (channelsOfNode > 1 && number) {
        return {*number % 2 == 0 ? FL : FR};
    }
    return {FL, FR};
}

}  // namespace zorvane
