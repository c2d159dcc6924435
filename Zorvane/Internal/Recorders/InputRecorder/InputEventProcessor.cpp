#include "Zorvane/Internal/Recorders/InputRecorder/InputEventProcessor.hpp"

#include <string>
#include <utility>

#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/Recorders/InputEventConversion.hpp"
#include "Zorvane/Internal/Recorders/InputRecorder/CGEventTypes.hpp"
#include "Zorvane/Internal/Recorders/InputRecorder/CursorObservation.hpp"
#include "Zorvane/Internal/Recorders/InputRecorder/InputEventCreation.hpp"
#include "Zorvane/Internal/RetryOnError.hpp"
#include "Zorvane/Internal/ZVInputEventJSON.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

constexpr std::int32_t timeScale = 1'000'000'000;
constexpr int maxAttempts = 3;
constexpr double retryDelay = 1.0 / 60;  // the refresh of a usual display
constexpr double logRateLimit = 10;      // seconds

CMTime hostTime(double seconds) {
    return CMTime::fromSeconds(seconds, timeScale);
}

const CGRect& requireArea(const CGRect& crop) {
    if (!(crop.size.width > 0 && crop.size.height > 0)) {
        throw ZVError::invalidConfiguration(
            "The recorded area " + debugDescription(crop) + " is empty, so that no place in it can be told.",
            "Can't record the mouse because the recorded area is empty.");
    }
    return crop;
}

auto typeMetadata(CGEventType type) {
    return [type] { return LogMetadata{{"CGEventType", std::to_string(static_cast<std::uint32_t>(type))}}; };
}

}  // namespace

InputEventProcessor::InputEventProcessor(const std::filesystem::path& url, const CGRect& crop,
                                         std::shared_ptr<const CursorTimeline> cursorTimeline,
                                         StableRecordingInterval recordingInterval, Logger logger)
    : logger_(std::move(logger)),
      crop_(requireArea(crop)),
      cursorTimeline_(std::move(cursorTimeline)),
      recordingInterval_(std::move(recordingInterval)),
      writer_(url),
      warnings_(logger_, logRateLimit) {}

Task<> InputEventProcessor::process(CGEvent cgEvent) {
    recordingInterval_.refresh();
    if (!cgEvent.nsEvent) {
        logger_.warning("Failed to convert CGEvent to NSEvent.", typeMetadata(cgEvent.type));
        co_return;
    }
    const double timestamp = cgEvent.nsEvent->timestamp;
    if (!recordingInterval_.contains(timestamp)) {
        co_return;
    }
    const CMTime eventTime = hostTime(timestamp);
    std::optional<CursorTimeline::Observation> cursor;
    if (contains(mouseEventTypes, cgEvent.type)) {
        // First of all: a change that is known only after the wait still stands ahead of the event.
        cursor = co_await cursorObservation(eventTime);
    }
    writeCursorChanges(eventTime);
    const ZVTime time = ZVTime::from(timestamp, recordingInterval_.recordFrom());
    lastTime_ = time;
    if (cursor) {
        write(ZVInputEvent(createZVMouseEvent(cgEvent, time, cursor->cursorType, crop_)));
    } else if (contains(keyPressEventTypes, cgEvent.type)) {
        write(ZVInputEvent(createZVKeyboardEvent(cgEvent, time)));
    } else if (contains(inputModifiersChangedTypes, cgEvent.type)) {
        write(ZVInputEvent(ZVInputModifiersChangedEvent{time, toZVInputModifierSet(cgEvent.flags)}));
    } else {
        logger_.warning("Unknown CGEvent type.", typeMetadata(cgEvent.type));
    }
}

void InputEventProcessor::finish() {
    recordingInterval_.refresh();
    writeCursorChanges(hostTime(recordingInterval_.recordUntil()));
    writer_.close();
}

void InputEventProcessor::writeCursorChanges(CMTime untilIncluding) {
    const CMTime start = hostTime(recordingInterval_.recordFrom());
    for (const auto& change : cursorTimeline_->observations(lastCursorChange_.value_or(start), untilIncluding)) {
        lastCursorChange_ = change.timestamp;
        if (const auto time = ZVTime::from(change.timestamp, start); lastTime_.seconds() < time.seconds()) {
            lastTime_ = time;
        }
        write(ZVInputEvent(createCursorChangedEvent(change, lastTime_, crop_)));
    }
}

// A display is sampled when it is refreshed, so that an event can arrive before the look that covers it.
Task<CursorTimeline::Observation> InputEventProcessor::cursorObservation(CMTime time) {
    const int attempts = hasWaitedAtEnd_ ? 1 : maxAttempts;
    int attempt = 0;
    auto fetch = [&] { return fetchCursorObservation(time, cursorTimeline_, ++attempt, attempts, logger_); };
    CursorTimeline::Observation observation = co_await retryOnError(attempts, retryDelay, std::move(fetch));
    hasWaitedAtEnd_ = hasWaitedAtEnd_ || (isEnding_ && attempt > 1);
    co_return observation;
}

void InputEventProcessor::write(const ZVInputEvent& event) {
    try {
        writer_.write(event);
    } catch (const NSError& error) {
        if (error.domain() != NSCocoaErrorDomain) {
            throw;  // the file is at fault, not the event
        }
        warnings_.warn("encoding", hostTimeClockTime(), "Failed to encode input event, it is lost.",
                       errorMetadata(std::current_exception()));
    }
}

}  // namespace zorvane
