// Which cursor was on the screen when, over one recording.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <variant>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Recorders/CursorRecorder/Cursor.hpp"
#include "Zorvane/Platform/AppKit/NSCursor.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"
#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

/// The moments at which the cursor became another one. Grows by one entry for each of them, and is never trimmed.
///
/// Any thread, in a block on `queue()`: a barrier for `preload` and `capture`, a plain one for the queries (asserted in
/// debug builds).
class CursorTimeline {
  public:
    struct Observation {
        CMTime timestamp;  ///< host time
        CGPoint location;  ///< of the pointer; points, global coordinates
        std::optional<ZVMouseButton> activeButton;
        CGEventFlags flags = CGEventFlags::none;
        std::string cursorId;
        ZVCursorType cursorType = ZVCursorType::custom;

        bool operator==(const Observation&) const = default;
    };

    struct BeforeFirstCapture {
        Observation firstAvailableObservation;
        bool operator==(const BeforeFirstCapture&) const = default;
    };
    struct Found {
        Observation observation;
        bool operator==(const Found&) const = default;
    };
    struct AfterLastCapture {
        Observation lastAvailableObservation;
        CMTime lastCaptureCall;
        bool operator==(const AfterLastCapture&) const = default;
    };
    struct NoCursorsCaptured {
        bool operator==(const NoCursorsCaptured&) const = default;
    };
    using QueryResult = std::variant<BeforeFirstCapture, Found, AfterLastCapture, NoCursorsCaptured>;

    const DispatchQueue& queue() const { return queue_; }

    /// Makes cursors known by their types.
    void preload(const std::vector<Cursor>& cursors);

    /// Notes what the screen shows at `time`, with the pointer's state. Returns the cursor's id; nothing if it has no
    /// image, which changes nothing but the time of the last look.
    std::optional<std::string> capture(const NSCursor& cursor, CMTime time, const CGEvent& pointer);

    /// The cursor that was on the screen at `time`.
    QueryResult cursor(CMTime time) const;

    /// The changes with `after` < time <= `untilIncluding`, in their order.
    std::vector<Observation> observations(CMTime after, CMTime untilIncluding) const;

  private:
    const DispatchQueue queue_ = DispatchQueue::concurrent("CursorTimeline");
};

}  // namespace zorvane
