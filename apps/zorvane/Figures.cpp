#include "Figures.hpp"

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace zorvane::cli {

std::string sizeText(std::uintmax_t bytes) {
    if (bytes < 1000) {
        return countText(bytes, "byte");
    }
    constexpr std::array units{"kB", "MB", "GB", "TB"};
    auto size = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    for (; size >= 999.95 && unit + 1 < units.size(); unit++) {
        size /= 1000;
    }
    return fmt::format("{:.1f} {}", size, units[unit]);
}

std::string countText(std::uint64_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string clockText(double seconds) {
    const auto whole = static_cast<std::uint64_t>(std::max(0.0, seconds));
    const auto minutes = whole / 60 % 60;
    const auto hours = whole / 3600;
    return hours > 0 ? fmt::format("{}:{:02}:{:02}", hours, minutes, whole % 60)
                     : fmt::format("{}:{:02}", minutes, whole % 60);
}

std::string printable(std::string_view text) {
    std::string result(text);
    std::ranges::replace_if(
        result, [](unsigned char character) { return character < ' ' || character == 0x7f; }, '?');
    return result;
}

}  // namespace zorvane::cli
