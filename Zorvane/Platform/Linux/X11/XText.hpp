// The text of properties.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zorvane {

/// How a program says that it wrote a text.
enum class XTextEncoding : std::uint8_t {
    utf8,
    latin1,
    /// ISO 2022. Of the character sets that it can switch to, ASCII, Latin-1 and UTF-8 are known; letters of another
    /// one come out as U+FFFD.
    compoundText,
};

/// A longer text is cut: nobody reads it, and a program may set one of any size.
inline constexpr std::size_t longestXText = 4096;  // characters

/// The bytes to ask the server for so that a text of that length is whole.
inline constexpr std::uint32_t longestXTextBytes = 4 * longestXText;

/// Valid UTF-8 of at most `longestXText` characters, whatever `bytes` hold: what isn't valid becomes U+FFFD, and
/// control characters stay. A text behind a zero byte is left out. Pure.
std::string decodeXText(std::string_view bytes, XTextEncoding encoding);

}  // namespace zorvane
