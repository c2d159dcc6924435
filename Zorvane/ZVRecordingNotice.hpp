// What a host may want to tell its user while a recording goes on.
#pragma once

#include <exception>
#include <string>

namespace zorvane {

/// Trouble that doesn't end a recording, and the end of such trouble.
struct ZVRecordingNotice {
    enum class Kind {
        sourceInterrupted,  ///< a source of sound gives nothing until further notice; its file holds silence meanwhile
        sourceResumed,      ///< it gives sound again
    };

    Kind kind = Kind::sourceInterrupted;
    /// What the source is called for people: the microphone's name, the names of the applications, "System Audio".
    std::string source;
    /// Why the source was interrupted; null if that isn't known, and when it has resumed.
    std::exception_ptr reason;
    /// A sentence for the user.
    std::string userMessage;
};

}  // namespace zorvane
