// Figures as people read them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zorvane::cli {

/// "640 bytes", "12.3 MB": powers of 1000.
std::string sizeText(std::uintmax_t bytes);

/// "1 file", "2 files": `noun` in the singular.
std::string countText(std::uint64_t count, std::string_view noun);

/// "1:02:03", "0:07": hours only if there are any; whole seconds, cut off.
std::string clockText(double seconds);

/// A text from a file, with its control characters replaced so that it can't play tricks on a terminal.
std::string printable(std::string_view text);

}  // namespace zorvane::cli
