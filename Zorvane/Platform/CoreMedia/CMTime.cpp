#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

#include <fmt/format.h>

#include <array>
#include <string_view>

namespace zorvane {

std::string CMTimeFlags::logDescription() const {
    static constexpr std::array<std::string_view, 5> names{"valid", "hasBeenRounded", "positiveInfinity",
                                                           "negativeInfinity", "indefinite"};
    std::string text;
    const auto append = [&text](std::string_view entry) {
        text += text.empty() ? "" : ", ";
        text += entry;
    };
    for (std::size_t bit = 0; bit < names.size(); ++bit) {
        if (contains(1U << bit)) {
            append(names[bit]);
        }
    }
    if (const std::uint32_t unknown = rawValue >> names.size() << names.size(); unknown != 0) {
        append(fmt::format("unknown flags:{}", unknown));
    }
    return text.empty() ? "<empty>" : text;
}

std::string CMTime::logDescription() const {
    return fmt::format("CMTime(seconds:{} timescale:{} value:{} flags:{})", seconds(), timescale, value,
                       flags.logDescription());
}

}  // namespace zorvane
