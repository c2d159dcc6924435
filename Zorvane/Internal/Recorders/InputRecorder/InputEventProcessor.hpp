// Turns the events of a recording, and the changes of the cursor between them, into the lines of the side file.
#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorders/CursorRecorder/CursorTimeline.hpp"
#include "Zorvane/Internal/Recorders/ThrottledWarnings.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Internal/StreamingJSONWriter.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"
#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

/// Takes the events one by one, in the order of their time, and keeps those inside the recording interval. A change of
/// the cursor stands ahead of the first event after it. One that is known only when that event has been written already
/// stands behind it and bears its time: the look that found the change was not over before.
///
/// An event that has no JSON form is lost alone, with a warning now and then.
class InputEventProcessor {
  public:
    /// Creates the file. Throws what `StreamingJSONWriter` throws, and a `ZVError` if the crop is empty: places are
    /// fractions of it.
    InputEventProcessor(const std::filesystem::path& url, const CGRect& crop,
                        std::shared_ptr<const CursorTimeline> cursorTimeline, StableRecordingInterval recordingInterval,
                        Logger logger);

    /// Writes an event. Waits up to two refreshes of a display for the cursor that belongs to an event of the mouse.
    /// Throws when there is no cursor at all by then, and when the file can't be written.
    Task<> process(CGEvent cgEvent);

    /// Says that the recording has ended, on any thread: no more than one of the events that are left waits for its
    /// cursor.
    void expectEnd() { isEnding_ = true; }

    /// Writes the changes of the cursor up to the recording's end and closes the file. Once, after the last event.
    /// Throws an `NSError`.
    void finish();

  private:
    void writeCursorChanges(CMTime untilIncluding);
    Task<CursorTimeline::Observation> cursorObservation(CMTime time);
    void write(const ZVInputEvent& event);

    const Logger logger_;
    const CGRect crop_;
    const std::shared_ptr<const CursorTimeline> cursorTimeline_;
    std::atomic<bool> isEnding_{false};

    // Of the task that processes, and of `finish` behind it:
    StableRecordingInterval recordingInterval_;
    StreamingJSONWriter writer_;
    ThrottledWarnings warnings_;
    std::optional<CMTime> lastCursorChange_;  // host time of the last one written
    ZVTime lastTime_;                         // of the last element, zero at first
    bool hasWaitedAtEnd_ = false;
};

}  // namespace zorvane
