// Finds where UTF-8 is valid, for text that comes from outside.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zorvane {

struct UTF8Sequence {
    /// Bytes of the character, or of the faulty stretch that one replacement character stands for. At least 1.
    std::size_t length;
    bool isValid;
};

/// Looks at the beginning of a text that isn't empty. Overlong forms, surrogates and values beyond U+10FFFF are faulty.
UTF8Sequence leadingUTF8Sequence(std::string_view text);

/// The text with U+FFFD for each faulty stretch.
std::string repairedUTF8(std::string_view text);

}  // namespace zorvane
