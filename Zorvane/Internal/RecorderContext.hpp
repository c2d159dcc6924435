// What every recorder of one recording is made with.
#pragma once

#include <filesystem>

#include "Zorvane/Internal/AbortSignal.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Internal/SourceNotices.hpp"

namespace zorvane {

struct RecorderContext {
    /// The bundle directory, which exists.
    std::filesystem::path bundleURL;
    StableRecordingInterval recordingInterval;
    /// The conductor's, to derive from.
    Logger logger;
    AbortHandler onAbort;
    NoticeHandler onNotice;
};

}  // namespace zorvane
