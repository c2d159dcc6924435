#include <chrono>
#include <ostream>
#include <utility>

#include "tests/Desktop/X11/X11EventsFixture.hpp"
#include "tests/Support/WaitUntil.hpp"

namespace zorvane {
namespace {

using testing::ElementsAre;
using Type = CGEventType;

/// A mouse event without its time.
struct Seen {
    Type type;
    double x;
    double y;
    std::int64_t button;

    bool operator==(const Seen&) const = default;
    friend void PrintTo(const Seen& seen, std::ostream* stream) {
        *stream << "type " << static_cast<unsigned>(seen.type) << " at " << seen.x << ", " << seen.y << " button "
                << seen.button;
    }
};

class X11MouseEventsTest : public X11EventsTest {
  protected:
    std::vector<Seen> seen() {
        std::vector<Seen> all;
        for (const CGEvent& event : heard_.all()) {
            all.push_back({event.type, event.location.x, event.location.y, event.mouseButtonNumber});
        }
        return all;
    }

    X11TestUser user_;
};

TEST_F(X11MouseEventsTest, AClickBetweenTwoMotionsOfOneBurstKeepsItsPlace) {
    const auto listener = listen();
    user_.moveTo(100, 50).click(1).moveTo(300, 70).warpTo(20, 30).act();
    listener->flush();
    EXPECT_THAT(seen(), ElementsAre(Seen{Type::mouseMoved, 100, 50, 0}, Seen{Type::leftMouseDown, 100, 50, 0},
                                    Seen{Type::leftMouseUp, 100, 50, 0}, Seen{Type::mouseMoved, 300, 70, 0},
                                    Seen{Type::mouseMoved, 20, 30, 0}));
}

TEST_F(X11MouseEventsTest, DragsGoByTheButtonThatIsHeldAndTheWheelIsNone) {
    const auto listener = listen();
    user_.moveTo(1, 1).press(3).moveTo(2, 2).press(1).click(4).moveTo(3, 3).release(1).release(3);
    user_.press(9).click(5).moveTo(4, 4).press(2).moveTo(5, 5).release(2).release(9).act();
    listener->flush();
    EXPECT_THAT(seen(), ElementsAre(Seen{Type::mouseMoved, 1, 1, 0}, Seen{Type::rightMouseDown, 1, 1, 1},
                                    Seen{Type::rightMouseDragged, 2, 2, 1}, Seen{Type::leftMouseDown, 2, 2, 0},
                                    Seen{Type::leftMouseDragged, 3, 3, 0}, Seen{Type::leftMouseUp, 3, 3, 0},
                                    Seen{Type::rightMouseUp, 3, 3, 1}, Seen{Type::otherMouseDown, 3, 3, 4},
                                    Seen{Type::otherMouseDragged, 4, 4, 4}, Seen{Type::otherMouseDown, 4, 4, 2},
                                    Seen{Type::otherMouseDragged, 5, 5, 2}, Seen{Type::otherMouseUp, 5, 5, 2},
                                    Seen{Type::otherMouseUp, 5, 5, 4}));
}

TEST_F(X11MouseEventsTest, TimesLieBetweenTheActAndItsEndAndNeverDecrease) {
    const auto seconds = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    constexpr double millisecond = 0.001;
    const auto listener = listen();
    double latest = 0;
    for (std::int16_t x = 0; x < 50; ++x) {
        const double before = seconds();
        user_.moveTo(x, 9).act();
        const double after = seconds();
        listener->flush();
        const auto events = heard_.all();
        ASSERT_EQ(events.size(), static_cast<std::size_t>(x) + 1);
        const double time = events.back().nsEvent->timestamp;
        EXPECT_GE(time, before - millisecond);
        EXPECT_LE(time, after + millisecond);
        EXPECT_LE(time, seconds());
        EXPECT_GE(time, std::exchange(latest, time));
    }
}

TEST_F(X11MouseEventsTest, EventsComeByThemselves) {
    const auto listener = listen();
    user_.warpTo(8, 8).act();
    waitUntil([&] { return heard_.all().size() == 1; });
    user_.moveTo(7, 7).act();
    waitUntil([&] { return heard_.all().size() == 2; });
}

TEST_F(X11MouseEventsTest, AMonitorHearsOnlyWhatItAskedForAndTheOtherOneNothing) {
    const auto global = platform_.eventMonitors->addGlobalMonitor(
        NSEventMask{1} << static_cast<unsigned>(Type::leftMouseDown), heard_.handler());
    const auto local = platform_.eventMonitors->addLocalMonitor(allEvents, heard_.handler());
    user_.moveTo(5, 6).click(1).act();
    global->flush();
    local->flush();
    EXPECT_THAT(seen(), ElementsAre(Seen{Type::leftMouseDown, 5, 6, 0}));
}

TEST_F(X11MouseEventsTest, APointerIsToldOfByItsPlaceAndWhatIsHeld) {
    user_.moveTo(30, 40).act();
    const auto still = platform_.events->create();
    ASSERT_TRUE(still);
    EXPECT_EQ(still->type, Type::null);
    EXPECT_EQ(still->location, (CGPoint{30, 40}));
    constexpr std::uint8_t leftSuper = 133;
    user_.press(2).keyDown(leftSuper).act();
    const auto dragging = platform_.events->create();
    ASSERT_TRUE(dragging);
    EXPECT_EQ(dragging->type, Type::otherMouseDragged);
    EXPECT_EQ(dragging->mouseButtonNumber, 2);
    EXPECT_EQ(dragging->flags, CGEventFlags::maskCommand);
}

}  // namespace
}  // namespace zorvane
