#include "Zorvane/Internal/Recorders/CursorRecorder/CursorTimeline.hpp"

#include <gtest/gtest.h>

#include "Zorvane/Platform/Virtual/VirtualCursor.hpp"
#include "tests/Support/AllocationCounter.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using testing::AllocationCounter;
using Observation = CursorTimeline::Observation;

const NSCursor arrow = virtualCursor(ZVCursorType::arrow);
const NSCursor iBeam = virtualCursor(ZVCursorType::iBeam);
const NSCursor withoutImage{.hotSpot = {1, 1}, .size = {16, 16}};

CMTime at(double seconds) {
    return CMTime::fromSeconds(seconds, 1000);
}

CGEvent pointerAt(double x, CGEventType type = CGEventType::null) {
    CGEvent event;
    event.type = type;
    event.location = {x, 0};
    event.flags = CGEventFlags::maskShift;
    return event;
}

class CursorTimelineTest : public testing::VirtualWorldTest {
  protected:
    CursorTimelineTest() {
        timeline.queue().syncBarrier([this] { timeline.preload(Cursor::allSystemCursors()); });
    }

    std::string capture(const NSCursor& cursor, double seconds, const CGEvent& pointer) {
        return timeline.queue().syncBarrier(
            [&] { return std::string(timeline.capture(cursor, at(seconds), pointer).value_or("none")); });
    }
    std::string capture(const NSCursor& cursor, double seconds, double x) {
        return capture(cursor, seconds, pointerAt(x));
    }

    /// What a query finds: the kind of its result and the cursor.
    std::string found(double seconds) const {
        struct Text {
            std::string operator()(const CursorTimeline::BeforeFirstCapture& result) const {
                return "before " + result.firstAvailableObservation.cursorId;
            }
            std::string operator()(const CursorTimeline::Found& result) const {
                return "found " + result.observation.cursorId;
            }
            std::string operator()(const CursorTimeline::AfterLastCapture& result) const {
                return "after " + std::to_string(result.lastCaptureCall.value) + " " +
                       result.lastAvailableObservation.cursorId;
            }
            std::string operator()(const CursorTimeline::NoCursorsCaptured&) const { return "none"; }
        };
        return std::visit(Text(), timeline.cursor(at(seconds)));
    }

    std::vector<std::string> changes(double after, double until) const {
        std::vector<std::string> ids;
        for (const Observation& each : timeline.observations(at(after), at(until))) {
            ids.push_back(each.cursorId);
        }
        return ids;
    }

    CursorTimeline timeline;
};

TEST_F(CursorTimelineTest, ANewTimelineKnowsNoCursorAtAnyTime) {
    EXPECT_EQ(found(-1e6), "none");
    EXPECT_EQ(found(1e6), "none");
    EXPECT_TRUE(std::holds_alternative<CursorTimeline::NoCursorsCaptured>(timeline.cursor(kCMTimeNegativeInfinity)));
    EXPECT_EQ(changes(-1e6, 1e6), std::vector<std::string>());
}

TEST_F(CursorTimelineTest, AnswersAreBeforeInOrBeyondWhatWasLookedAt) {
    capture(arrow, 1, 10);
    capture(iBeam, 2, 11);
    capture(arrow, 3, 12);
    capture(arrow, 4, 13);  // adds nothing
    EXPECT_EQ(found(0.999), "before arrow");
    EXPECT_EQ(found(1), "found arrow");
    EXPECT_EQ(found(1.999), "found arrow");
    EXPECT_EQ(found(2), "found iBeam");
    EXPECT_EQ(found(4), "found arrow");
    EXPECT_EQ(found(4.001), "after 4000 arrow");
    EXPECT_EQ(changes(0, 9), (std::vector<std::string>{"arrow", "iBeam", "arrow"}));
    EXPECT_EQ(changes(1, 2), std::vector<std::string>{"iBeam"});
    EXPECT_EQ(changes(2, 2), std::vector<std::string>());
    EXPECT_EQ(changes(3, 1), std::vector<std::string>());
}

TEST_F(CursorTimelineTest, AnObservationHoldsThePointersState) {
    CGEvent dragging = pointerAt(7, CGEventType::otherMouseDragged);
    dragging.mouseButtonNumber = 2;
    capture(iBeam, 1, dragging);
    const Observation expected{.timestamp = at(1),
                               .location = {7, 0},
                               .activeButton = ZVMouseButton::center,
                               .flags = CGEventFlags::maskShift,
                               .cursorId = "iBeam",
                               .cursorType = ZVCursorType::iBeam};
    EXPECT_EQ(timeline.observations(at(0), at(1)), std::vector{expected});
}

TEST_F(CursorTimelineTest, ASystemCursorIsToldByShapeAndImage) {
    EXPECT_EQ(capture(arrow, 1, 1), "arrow");
    EXPECT_EQ(capture(virtualCursor("abc"), 2, 2), "custom-a9993e364706816aba3e25717850c26c9cd0d89d");
    const std::string elsewhere = capture(virtualCursor(*arrow.tiffRepresentation, {5, 4}), 3, 3);
    EXPECT_TRUE(elsewhere.starts_with("custom-")) << elsewhere;
    EXPECT_EQ(elsewhere.size(), 47U);
    EXPECT_EQ(capture(virtualCursor(*arrow.tiffRepresentation, {4, 4}, {48, 48}), 4, 4), elsewhere);
    EXPECT_EQ(timeline.observations(at(2), at(3)).at(0).cursorType, ZVCursorType::custom);
    // Neither of the two shapes made a cursor of its own: their images, and so their ids, are equal.
    EXPECT_EQ(changes(3, 9), std::vector<std::string>());
    EXPECT_EQ(capture(arrow, 5, 5), "arrow");
}

TEST_F(CursorTimelineTest, ZeroAndNegativeZeroAreTheSamePlace) {
    const Cursor named = Cursor::allSystemCursors().front();
    timeline.queue().syncBarrier([&] {
        Cursor cornered = named;
        cornered.shape.hotspot = {0, -0.0};
        timeline.preload({cornered});
    });
    EXPECT_EQ(capture(virtualCursor(named.tiffRepresentation, {-0.0, 0}), 1, 1), "arrow");
}

TEST_F(CursorTimelineTest, OfEqualCursorsThatAreMadeKnownTheLaterOneCounts) {
    const Cursor impostor({arrow.hotSpot, arrow.size}, *arrow.tiffRepresentation);
    timeline.queue().syncBarrier([&] { timeline.preload({impostor}); });
    EXPECT_EQ(capture(arrow, 1, 1), impostor.id);
}

TEST_F(CursorTimelineTest, ALookAtACursorWithoutImageCountsAsALook) {
    EXPECT_EQ(capture(withoutImage, 1, 1), "none");
    EXPECT_EQ(found(1), "none");
    capture(arrow, 2, 2);
    EXPECT_EQ(capture(withoutImage, 3, 3), "none");
    EXPECT_EQ(found(3), "found arrow");
    EXPECT_EQ(found(4), "after 3000 arrow");
    EXPECT_EQ(capture(withoutImage, 5, 3), "arrow") << "nothing seems to have changed";
    EXPECT_EQ(capture(virtualCursor(""), 6, 4), "none");
}

TEST_F(CursorTimelineTest, UnderAStandingPointerOnlyTheShapeIsLookedAt) {
    capture(arrow, 1, 1);
    EXPECT_EQ(capture(iBeam, 2, 1), "arrow");
    EXPECT_EQ(found(2), "found arrow");
    EXPECT_EQ(capture(iBeam, 3, 2), "iBeam");
    EXPECT_NE(capture(virtualCursor("other shape", {0, 0}), 4, 2), "iBeam");
}

TEST_F(CursorTimelineTest, LookingAtTheSameCursorAllocatesNothing) {
    if (!AllocationCounter::isAvailable()) {
        GTEST_SKIP() << "a sanitizer counts allocations itself";
    }
    const NSCursor own = virtualCursor(std::string(64 * 64 * 4, 'x'));
    const CGEvent standing = pointerAt(1);
    const CGEvent moved = pointerAt(2);
    timeline.queue().syncBarrier([&] {
        timeline.capture(own, at(1), standing);
        const AllocationCounter counter;
        timeline.capture(own, at(2), standing);
        timeline.capture(own, at(3), moved);
        EXPECT_EQ(counter.count(), 0U);
    });
    EXPECT_EQ(found(3), "found " + capture(own, 4, 3));
}

}  // namespace
}  // namespace zorvane
