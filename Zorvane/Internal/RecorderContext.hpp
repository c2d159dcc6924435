// What every recorder of one recording is made with.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

#include "Zorvane/Internal/AbortSignal.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/OutputNames.hpp"
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
    /// Shared by all recorders of the recording.
    std::shared_ptr<OutputNames> outputNames = std::make_shared<OutputNames>();

    /// The `outputDescription` of an output in the bundle, and the `inputEventsURL` of a file beside it. The names are
    /// this recorder's from then on. Throw as these functions and `OutputNames` do.
    OutputDescription claimOutput(const ZVOutputForm& output, std::string_view fallbackFilename) const;
    std::filesystem::path claimSideFile(const ZVScreenRecordingOutputOptions& output, std::string_view fallbackFilename,
                                        std::string_view suffix) const;
};

}  // namespace zorvane
