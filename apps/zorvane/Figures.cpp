#include "Figures.hpp"

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace zorvane::cli {
namespace {

/// The bytes of a control character at the beginning of UTF-8 text; 0 if there is none. Counted in are those that
/// terminals obey from beyond ASCII, and those that turn the direction of what is written.
std::size_t tricksterAt(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < ' ' || first == 0x7f) {
        return 1;
    }
    if (first == 0xC2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0) {
        return 2;  // U+0080 to U+009F
    }
    constexpr std::array directions{"\u200E", "\u200F", "\u202A", "\u202B", "\u202C", "\u202D",
                                    "\u202E", "\u2066", "\u2067", "\u2068", "\u2069"};
    const bool turns = std::ranges::any_of(directions, [&](const char* one) { return text.starts_with(one); });
    return turns ? 3 : 0;
}

}  // namespace

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
    std::string result;
    result.reserve(text.size());
    for (std::size_t index = 0; index < text.size();) {
        const std::size_t length = tricksterAt(text.substr(index));
        if (length > 0) {
            result += '?';
            index += length;
        } else {
            result += text[index++];
        }
    }
    return result;
}

}  // namespace zorvane::cli
