// The calls of a writer's start and end whose state the caller can't rule out: what they raise arrives as an error.
#pragma once

#include <memory>

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"

namespace zorvane {

// Each throws an `NSError` in place of the `NSException` that the writer raises in a wrong state.

/// `startWriting`; false if that failed, and the writer's `error` says why.
bool safe_startWriting(AVAssetWriter& writer);

/// `endSession` at the source's time.
void safe_endSession(AVAssetWriter& writer, CMTime atSourceTime);

/// `finishWriting`, waited for: the wait lasts until the file is done, also in a cancelled task, and keeps the writer
/// alive. Whether the file is whole, the writer's `status` and `error` say.
Task<> safe_finishWriting(std::shared_ptr<AVAssetWriter> writer);

}  // namespace zorvane
