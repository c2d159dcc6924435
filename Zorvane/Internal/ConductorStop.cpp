// The conductor's stop: what each state makes of it, finishing a recording, and discarding a prepared one.
#include <utility>

#include "Zorvane/Internal/Conductor.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/RecorderFinishing.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"

namespace zorvane {
namespace {

using Result = ZVRecorder::Result;
using PartialResultError = ZVRecorder::PartialResultError;

PartialResultError partialResultError(Result result, std::exception_ptr error) {
    return PartialResultError(std::move(result), GroupedErrors({std::move(error)}));
}

/// What a stop throws for an abort that failed with `error`.
GroupedErrors groupedErrorsOfAbort(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const AbortError& abortError) {
        return abortError.groupedErrors();
    } catch (...) {
        return GroupedErrors({std::make_exception_ptr(
            ZVError::badOperation("Called stop while recorder was already aborted and failed to stop gracefully."))});
    }
}

LogMetadata intervalMetadata(const StableRecordingInterval& interval) {
    return {{"duration", secondsText(interval.recordUntil() - interval.recordFrom())},
            {"recordFrom", secondsText(interval.recordFrom())},
            {"recordUntil", secondsText(interval.recordUntil())}};
}

}  // namespace

Task<Result> Conductor::decideStop(std::string traceID) {
    const Logger logger = traced(traceID);
    while (state_.is(Case::preparing) || state_.is(Case::stopping)) {
        logger.warning(state_.is(Case::preparing) ? "Stop called while still preparing, waiting for completion."
                                                  : "Stop called while already stopping, waiting for completion.");
        co_await stateDidChange().ignoringCancellation();
        logger.debug("Stop resumed after state change.");
    }
    switch (state_.kind()) {
        case Case::recording:
        case Case::abortingRecording:
            logger.debug("Stopping recording from recording state.");
            co_return co_await finishRecording(logger);
        case Case::prepared:
        case Case::abortingPrepared:
            logger.info("Stopping recorder that only prepared, not yet started.");
            co_return discardRecording();
        default:
            co_return outcomeOfEnded(logger);
    }
}

Task<Result> Conductor::finishRecording(Logger logger) {
    setState(ConductorState::Stopping());
    recordingInterval_->stop(hostTimeClockTime().seconds());

    FinishedRecorders finished = co_await finishAll(recorders(), logger);
    const Result result{bundle_.url(), ZVBundleInfo{.version = 1, .files = std::move(finished.files)}};
    std::vector<std::exception_ptr>& errors = finished.errors;
    writeManifest(result, errors, logger);

    const StableRecordingInterval interval(recordingInterval_);
    if (!errors.empty()) {
        logger.error("Stopped recording with errors.", [&] {
            LogMetadata metadata = intervalMetadata(interval);
            metadata["errors.count"] = std::to_string(errors.size());
            return metadata;
        });
        failStop(PartialResultError(result, GroupedErrors(errors)));
    }
    logger.info("Stopped recording.", [&] { return intervalMetadata(interval); });
    setState(ConductorState::Stopped{result});
    co_return result;
}

void Conductor::writeManifest(const Result& result, std::vector<std::exception_ptr>& errors, const Logger& logger) {
    logger.trace("Writing zorvane.json to output folder.");
    try {
        bundle_.write(result.bundleInfo);
        logger.info("Wrote zorvane.json to output folder.");
    } catch (...) {
        errors.push_back(std::current_exception());
        logger.error("Failed to write zorvane.json to output folder.", [&] {
            return LogMetadata{
                {"error", debugDescription(errors.back())},
                {"result", fmt::format("{}: {} files", bundle_.urlString(), result.bundleInfo.files.size())}};
        });
    }
}

Result Conductor::discardRecording() {
    try {
        bundle_.recreate();
    } catch (...) {
        failStop(partialResultError(emptyResult(), std::current_exception()));
    }
    setState(ConductorState::Stopped{emptyResult()});
    return emptyResult();
}

Result Conductor::outcomeOfEnded(const Logger& logger) {
    switch (state_.kind()) {
        case Case::initial:
            logger.error("Cannot stop a recorder that hasn't prepared, throwing PartialResultError.");
            failStop(partialResultError(emptyResult(), std::make_exception_ptr(ZVError::badOperation(
                                                           "Called stop while recorder wasn't prepared yet."))));
        case Case::prepareFailed:
            logger.error(
                "Cannot stop a recorder that failed preparation, rethrowing preparation error inside a "
                "PartialResultError.");
            throw partialResultError(emptyResult(), state_.get<ConductorState::PrepareFailed>().error);
        case Case::stopFailed: {
            const PartialResultError& error = state_.get<ConductorState::StopFailed>().error;
            logger.warning("Stop called while previously failed, rethrowing same error again.",
                           errorMetadata(std::make_exception_ptr(error)));
            throw error;
        }
        case Case::aborted:
            return outcomeOfAborted(state_.get<ConductorState::Aborted>().reason, logger);
        default:
            logger.warning("Stop called while already stopped, returning previous result.");
            return state_.get<ConductorState::Stopped>().result;
    }
}

Result Conductor::outcomeOfAborted(const ZVRecorder::AbortReason& reason, const Logger& logger) {
    using Kind = ZVRecorder::AbortReason::Kind;
    switch (reason.kind()) {
        case Kind::userStopped:
            logger.warning("Stop called while already aborted, returning previous result.", [] {
                return LogMetadata{{"abortReason", "userStopped"}};
            });
            return reason.result();
        case Kind::interrupted:
            logger.warning("Stop called while already aborted, returning previous result.", [&] {
                return LogMetadata{{"abortReason", "interrupted"}, {"error", debugDescription(reason.error())}};
            });
            return reason.result();
        case Kind::failed:
            break;
    }
    logger.warning("Stop called while already aborted, throwing PartialResultError.", [&] {
        return LogMetadata{{"abortReason", "failed"}, {"error", debugDescription(reason.error())}};
    });
    throw PartialResultError(reason.result(), groupedErrorsOfAbort(reason.error()));
}

void Conductor::failStop(PartialResultError error) {
    setState(ConductorState::StopFailed{error});
    throw error;
}

Result Conductor::emptyResult() const {
    return {bundle_.url(), ZVBundleInfo::empty};
}

}  // namespace zorvane
