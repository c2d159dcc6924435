#include "OptionValues.hpp"

#include <charconv>
#include <cmath>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

namespace zorvane::cli {
namespace {

constexpr double longestRecording = 366.0 * 24 * 60 * 60;

/// The number that `text` consists of; nothing if it is anything else.
template <class Number, class... Format>
std::optional<Number> wholeNumber(std::string_view text, Format... format) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number, format...);
    return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

}  // namespace

double parseSeconds(const std::string& text) {
    const auto seconds = wholeNumber<double>(text);
    if (!seconds || !std::isfinite(*seconds) || *seconds <= 0 || *seconds > longestRecording) {
        throw std::invalid_argument(fmt::format(
            "\"{}\" is no length of a recording. Give a number of seconds above 0 and up to {:.0f}, such as 10 "
            "or 2.5.",
            text, longestRecording));
    }
    return *seconds;
}

DisplayName parseDisplay(const std::string& text) {
    if (text == "main") {
        return {};
    }
    const auto id = wholeNumber<std::uint32_t>(text);
    if (!id) {
        throw std::invalid_argument(
            fmt::format("\"{}\" names no display. Give \"main\" or a display's id, a whole number.", text));
    }
    return {id};
}

std::uint32_t parseWindow(const std::string& text) {
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const auto id = isHexadecimal ? wholeNumber<std::uint32_t>(std::string_view(text).substr(2), 16)
                                  : wholeNumber<std::uint32_t>(text);
    if (!id) {
        throw std::invalid_argument(fmt::format(
            "\"{}\" names no window. Give a window's id, a whole number; \"zorvane sources windows\" lists them.",
            text));
    }
    return *id;
}

std::int32_t parseProcess(const std::string& text) {
    const auto id = wholeNumber<std::int32_t>(text);
    if (!id || *id <= 0) {
        throw std::invalid_argument(fmt::format(
            "\"{}\" names no process. Give a process id, a whole number; \"zorvane sources applications\" lists them.",
            text));
    }
    return *id;
}

std::set<ZVScreenRecordingExcludeOptions> parseExclusions(const std::string& text) {
    std::set<ZVScreenRecordingExcludeOptions> exclusions;
    std::istringstream names(text + ",");
    for (std::string name; std::getline(names, name, ',');) {
        if (name == "current") {
            exclusions.insert(ZVScreenRecordingExcludeOptions::currentProcess);
        } else if (name == "indicator") {
            exclusions.insert(ZVScreenRecordingExcludeOptions::screenRecordingIndicator);
        } else {
            throw std::invalid_argument(fmt::format(
                "\"{}\" is nothing that can be left out. Give current, indicator, or both with a comma.", name));
        }
    }
    return exclusions;
}

}  // namespace zorvane::cli
