#include "Zorvane/Internal/Recorders/InputRecorder/CursorObservation.hpp"

#include <string>
#include <variant>

#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

using Observation = CursorTimeline::Observation;

/// An attempt, and what becomes of each answer of the timeline.
struct Attempt {
    CMTime eventTime;
    int number;
    int maxNumber;
    const Logger& logger;

    LogMetadata metadata(LogMetadata more = {}) const {
        more["eventOccured"] = eventTime.logDescription();
        more["attempt"] = std::to_string(number);
        more["maxAttempts"] = std::to_string(maxNumber);
        return more;
    }

    Observation operator()(CursorTimeline::Found& found) const { return std::move(found.observation); }

    Observation operator()(CursorTimeline::BeforeFirstCapture& before) const {
        Observation& first = before.firstAvailableObservation;
        logger.info("Input event occured before first cursor was captured, falling back to first known cursor.", [&] {
            return metadata({{"firstCapture", first.timestamp.logDescription()}});
        });
        return std::move(first);
    }

    Observation operator()(CursorTimeline::AfterLastCapture& after) const {
        const auto lastCapture = [&] { return metadata({{"lastCapture", after.lastCaptureCall.logDescription()}}); };
        if (number < maxNumber) {
            logger.trace("Input event occured after last cursor capture, retrying.", lastCapture);
            throw ZVError::internalError("Input event occured after last cursor capture.");
        }
        logger.info("Input event occured after last cursor capture, falling back to last known cursor.", lastCapture);
        return std::move(after.lastAvailableObservation);
    }

    Observation operator()(CursorTimeline::NoCursorsCaptured&) const {
        logger.debug("Input event occured while cursor timeline is empty.", [&] { return metadata(); });
        throw ZVError::internalError("Cursor timeline empty.");
    }
};

}  // namespace

Task<Observation> fetchCursorObservation(CMTime time, std::shared_ptr<const CursorTimeline> timeline, int attempt,
                                         int maxAttempts, Logger logger) {
    CursorTimeline::QueryResult result = timeline->cursor(time);
    co_return std::visit(Attempt{time, attempt, maxAttempts, logger}, result);
}

}  // namespace zorvane
