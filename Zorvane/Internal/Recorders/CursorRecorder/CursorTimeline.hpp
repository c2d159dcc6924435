// Which cursor was on the screen when, over one recording.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
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
/// Any thread: `preload` and `capture` in a barrier block on `queue()`, which a debug build asserts; the queries enter
/// the queue themselves.
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

    /// Makes cursors known by their types. Of two with the same shape and image the later one counts.
    void preload(const std::vector<Cursor>& cursors);

    /// Notes what the screen shows at `time`, which is no earlier than the last one, with the pointer's state. Returns
    /// the cursor's id, which stays valid until the next call; nothing if it has no image, which changes nothing but
    /// the time of the last look.
    ///
    /// Allocates nothing unless the cursor has become another one. An image that changes under a standing pointer, but
    /// keeps size and hot spot, is noticed at the pointer's next movement.
    std::optional<std::string_view> capture(const NSCursor& cursor, CMTime time, const CGEvent& pointer);

    /// The cursor that was on the screen at `time`.
    QueryResult cursor(CMTime time) const;

    /// The changes with `after` < time <= `untilIncluding`, in their order.
    std::vector<Observation> observations(CMTime after, CMTime untilIncluding) const;

  private:
    /// What a look saw, whether or not it brought an entry.
    struct Look {
        Cursor::Shape cursorShape = Cursor::Shape::invalid;
        CMTime timestamp = kCMTimeNegativeInfinity;
        CGPoint location;
    };

    struct ByImage {
        using is_transparent = void;
        bool operator()(const Cursor& a, const Cursor& b) const { return a.tiffRepresentation < b.tiffRepresentation; }
        bool operator()(const Cursor& a, std::string_view b) const { return a.tiffRepresentation < b; }
        bool operator()(std::string_view a, const Cursor& b) const { return a < b.tiffRepresentation; }
    };

    std::optional<std::string_view> note(const NSCursor& cursor, const Look& look, const CGEvent& pointer);
    const Cursor& known(const Cursor::Shape& shape, const std::string& tiffRepresentation);
    QueryResult find(CMTime time) const;
    std::vector<Observation>::const_iterator firstAfter(CMTime time) const;

    const DispatchQueue queue_ = DispatchQueue::concurrent("CursorTimeline");

    // Of the queue:
    std::unordered_set<Cursor::Shape, Cursor::ShapeHash> unsafeCursorsMissingTiffRepresentation_;  // for a debugger
    std::vector<Observation> cursorTimeline_;                                                      // in order of time
    std::unordered_map<Cursor::Shape, std::set<Cursor, ByImage>, Cursor::ShapeHash> cursorMap_;
    Look lastCaptureCall_;
};

}  // namespace zorvane
