#include "Zorvane/Internal/AVAssetWriterSafeCalls.hpp"

#include <utility>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Interop/ExceptionCatcher.hpp"

namespace zorvane {

bool safe_startWriting(AVAssetWriter& writer) {
    return ExceptionCatcher::catching([&] { return writer.startWriting(); });
}

void safe_endSession(AVAssetWriter& writer, CMTime atSourceTime) {
    ExceptionCatcher::catching([&] { writer.endSession(atSourceTime); });
}

Task<> safe_finishWriting(std::shared_ptr<AVAssetWriter> writer) {
    auto [continuation, waiter] = makeContinuation();
    AVAssetWriter::Completion completion = [continuation = std::move(continuation)] { continuation.resume(); };
    const auto finish = [&] { writer->finishWriting(std::move(completion)); };
    ExceptionCatcher::catching(finish);
    co_await std::move(waiter).ignoringCancellation();
}

}  // namespace zorvane
