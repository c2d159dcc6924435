// The common end of all recorders of a recording.
#pragma once

#include <exception>
#include <vector>

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorder.hpp"

namespace zorvane {

/// What finishing gave, both lists in the order of the recorders.
struct FinishedRecorders {
    std::vector<ZVBundleInfo::FileAsset> files;
    std::vector<std::exception_ptr> errors;
};

/// Finishes all recorders at once. One that throws holds up none of the others, and neither does the cancellation of
/// the caller: media that were captured are closed.
Task<FinishedRecorders> finishAll(Recorders recorders, Logger logger);

}  // namespace zorvane
