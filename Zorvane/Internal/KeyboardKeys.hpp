// The keys that have a name of their own: what to show for them, and by which codes the window server knows them.
#pragma once

#include <cstdint>
#include <string_view>

#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

/// A key's row of the table.
struct KeyboardKey {
    std::string_view title;
    std::string_view symbol;
    std::int64_t keyCode;  ///< -1 for `character`, which stands for all other codes
};

const KeyboardKey& keyboardKey(ZVKeyboardKeyType keyType);

/// `character` for a code that isn't in the table.
ZVKeyboardKeyType keyboardKeyType(std::int64_t keyCode);

}  // namespace zorvane
