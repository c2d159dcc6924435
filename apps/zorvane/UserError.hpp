// Errors that this program itself finds.
#pragma once

#include <string>

#include "Zorvane/ZVError.hpp"

namespace zorvane::cli {

/// Something that the user can set right; `text` says what and how.
inline ZVError userError(const std::string& text) {
    return ZVError::invalidConfiguration(text, text);
}

}  // namespace zorvane::cli
