#include "Zorvane/Internal/Recorders/StreamCapture.hpp"

#include <utility>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

bool isStreamError(const std::exception_ptr& error, SCStreamErrorCode code) {
    try {
        std::rethrow_exception(error);
    } catch (const NSError& platformError) {
        return platformError.domain() == SCStreamErrorDomain && platformError.code() == static_cast<int>(code);
    } catch (...) {
        return false;
    }
}

/// Bridges a stream's completion handler to the awaiting coroutine.
SCStream::Completion resuming(Continuation<> continuation) {
    return [continuation = std::move(continuation)](std::exception_ptr error) {
        if (error) {
            continuation.resumeThrowing(std::move(error));
        } else {
            continuation.resume();
        }
    };
}

}  // namespace

StopErrorHandler makeStopErrorHandler(const Logger& logger, const AbortHandler& onAbort) {
    return [logger, onAbort](std::exception_ptr error) {
        if (!error) {
            error = std::make_exception_ptr(
                ZVError::internalError("ScreenCaptureKit stopped without reporting any error information."));
        }
        if (isStreamError(error, SCStreamErrorCode::userStopped)) {
            logger.debug("ScreenCaptureKit stopped by user.");
            onAbort(AbortSignal::userStopped());
        } else {
            logger.debug("ScreenCaptureKit interrupted.", errorMetadata(error));
            onAbort(AbortSignal::interrupted(error));
        }
    };
}

ZVError noSystemAudioError() {
    return ZVError::internalError("No audio samples received from system audio.",
                                  "No audio from system audio. If this problem persists, try rebooting your computer.");
}

Task<> startCapture(SCStream& stream, Logger logger) {
    auto [continuation, started] = makeContinuation();
    stream.startCapture(resuming(std::move(continuation)));
    try {
        co_await std::move(started);
    } catch (const ZVCancelled&) {
        throw;
    } catch (...) {
        logger.error("Failed to start capture.", errorMetadata(std::current_exception()));
        throw;
    }
}

Task<std::exception_ptr> stopCapture(SCStream& stream, Logger logger) {
    auto [continuation, stopped] = makeContinuation();
    stream.stopCapture(resuming(std::move(continuation)));
    try {
        co_await std::move(stopped).ignoringCancellation();
    } catch (...) {
        const std::exception_ptr error = std::current_exception();
        if (isStreamError(error, SCStreamErrorCode::attemptToStopStreamState)) {
            logger.info("ScreenCaptureKit stream has already been stopped.", [] {
                return LogMetadata{{"error", "SCStreamError.attemptToStopStreamState"}};
            });
            co_return nullptr;
        }
        logger.warning("Failed to stop ScreenCaptureKit stream.", errorMetadata(error));
        co_return error;
    }
    co_return nullptr;
}

}  // namespace zorvane
