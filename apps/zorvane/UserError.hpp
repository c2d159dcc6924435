// Errors that this program itself finds.
#pragma once

#include <string>

#include "Zorvane/ZVError.hpp"

namespace zorvane::cli {

/// Something that the user can set right; `text` says what and how.
inline ZVError userError(const std::string& text) {
    return ZVError::invalidConfiguration(text, text);
}

/// The user has ended a recording that had not begun.
inline ZVError stoppedBeforeStart() {
    const char* text = "Stopped before the recording began.";
    return ZVError::badOperation(text, text);
}

}  // namespace zorvane::cli
