// What a host may want to tell its user while a recording goes on.
#pragma once

#include <exception>
#include <string>

namespace zorvane {

/// Trouble that doesn't end a recording, and the end of such trouble.
struct ZVRecordingNotice {
    enum class Kind {
        sourceInterrupted,  ///< a source gives nothing until further notice; its file holds silence and the last
                            ///< picture
        sourceResumed,      ///< it gives samples again
        segmentLost,        ///< a file of segmented output couldn't be written; the recording goes on without it
    };

    Kind kind = Kind::sourceInterrupted;
    /// What the source is called for people: the name of the microphone, camera or phone, the names of the
    /// applications, "System Audio"; of a segment the name of its file.
    std::string source;
    /// Why the source was interrupted or the segment lost; null if that isn't known, and when a source has resumed.
    std::exception_ptr reason;
    /// A sentence for the user.
    std::string userMessage;
};

}  // namespace zorvane
