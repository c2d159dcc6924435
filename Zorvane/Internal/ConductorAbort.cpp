// The conductor's abort: a recorder's signal ends the recording.
#include <utility>

#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Conductor.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/ShortID.hpp"

namespace zorvane {
namespace {

using AbortReason = ZVRecorder::AbortReason;

AbortReason makeReason(const AbortSignal& signal, const ZVOutcome<ZVRecorder::Result>& stopped) {
    try {
        ZVRecorder::Result result = stopped.value();
        return signal.error() ? AbortReason::interrupted(std::move(result), signal.error())
                              : AbortReason::userStopped(std::move(result));
    } catch (const ZVRecorder::PartialResultError& error) {
        return AbortReason::failed(error.result(), std::make_exception_ptr(error.groupedErrors()));
    }
}

}  // namespace

AbortHandler Conductor::makeAbortHandler() {
    return [weak = weak_from_this()](AbortSignal signal) {
        auto conductor = weak.lock();
        if (!conductor) {
            return;
        }
        // The task takes the only reference made here, so that no recorder is ever destroyed on its own thread.
        const auto executor = conductor->executor_;
        spawn(abortOwned(std::move(conductor), std::move(signal)), executor);
    };
}

Task<> Conductor::abortOwned(std::shared_ptr<Conductor> conductor, AbortSignal signal) {
    co_await conductor->abort(std::move(signal), ShortID::make());
}

Task<> Conductor::abort(AbortSignal signal, std::string traceID) {
    const Logger logger = traced(traceID);
    while (state_.is(Case::preparing)) {
        logger.info("Abort called while still preparing, waiting for completion.");
        co_await stateDidChange();
        logger.debug("Abort resumed after state change.");
    }
    const auto signalMetadata = [&] { return LogMetadata{{"signal", signal.debugDescription()}}; };
    const auto droppedMetadata = [&] {
        return LogMetadata{{"state", std::string(state_.debugDescription())},
                           {"subsequentSignal", signal.debugDescription()}};
    };
    switch (state_.kind()) {
        case Case::recording:
            logger.debug("Aborting recording from recording state.", signalMetadata);
            setState(ConductorState::AbortingRecording());
            break;
        case Case::prepared:
            logger.debug("Aborting recording from prepared state.", signalMetadata);
            setState(ConductorState::AbortingPrepared());
            break;
        case Case::initial:
            logger.critical("Unexpected abort in initial state.", droppedMetadata);
            co_return;
        default:
            logger.warning("Abort called on recorder that already has stopped recording, call will be ignored.",
                           droppedMetadata);
            co_return;
    }
    const ZVOutcome<ZVRecorder::Result> stopped = co_await decideStop(traceID).outcome();
    const AbortReason reason = makeReason(signal, stopped);
    logger.info("Aborted recording.", [&] { return LogMetadata{{"reason", reason.logErrorDescription()}}; });
    tellHost(reason, logger);
    setState(ConductorState::Aborted{reason});
}

void Conductor::tellHost(const AbortReason& reason, const Logger& logger) {
    try {
        onAbort_(reason);
    } catch (...) {
        logger.error("The abort handler threw.", errorMetadata(std::current_exception()));
    }
}

}  // namespace zorvane
