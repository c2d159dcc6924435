#include "Zorvane/Internal/FrameRepeater.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <optional>
#include <thread>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/ManualTime.hpp"
#include "tests/Support/Timeline.hpp"

namespace zorvane {
namespace {

using namespace std::chrono_literals;
using testing::at;
using testing::Lines;

class FrameRepeaterTest : public testing::ManualTimeTest {
  protected:
    FrameRepeaterTest() {
        repeater->setHandler([this](char item, CMTime time, std::optional<CMTime> addedTime) {
            const std::string added = addedTime ? fmt::format(" +{}", addedTime->seconds()) : "";
            output.push_back(fmt::format("{} {}{}", item, time.seconds(), added));
        });
    }

    std::optional<FrameRepeater<char>> repeater{1.0};
    Lines output;
};

TEST_F(FrameRepeaterTest, FramesThatComeFasterThanTheIntervalAreNeverRepeated) {
    Lines expected;
    for (int frame = 0; frame < 5; ++frame) {
        repeater->append('a', at(10 + frame));
        expected.push_back(fmt::format("a {}", 10 + frame));
        clock->advance(999ms);
    }
    EXPECT_EQ(output, expected);
}

TEST_F(FrameRepeaterTest, ALoneFrameIsRepeatedOncePerInterval) {
    repeater->append('a', at(10));
    clock->advance(3500ms);
    EXPECT_EQ(output, (Lines{"a 10", "a 11 +1", "a 12 +2", "a 13 +3"}));

    repeater->append('b', at(13.5));
    clock->advance(1s);
    EXPECT_EQ(output.back(), "b 14.5 +1") << "counts from the new frame";
}

TEST_F(FrameRepeaterTest, AFrameThatIsNotLaterIsMovedToOneTickAfterTheLast) {
    repeater->append('a', at(10, 1000));
    repeater->append('b', at(10, 1000));
    repeater->append('c', at(4));
    EXPECT_EQ(output, (Lines{"a 10", "b 10.001", "c 10.002"}));
}

TEST_F(FrameRepeaterTest, ARepeatThatHasBeenOvertakenIsLeftOut) {
    repeater->append('a', at(20));
    repeater->append('b', at(17.5));
    clock->advance(2s);
    EXPECT_EQ(output.size(), 2u) << "18.5 and 19.5 are past";
    clock->advance(1s);
    EXPECT_EQ(output.back(), "b 20.5 +3");
}

TEST_F(FrameRepeaterTest, CancelStopsRepeatsUntilTheNextFrame) {
    repeater->append('a', at(10));
    clock->advance(500ms);
    repeater->cancel();
    clock->advance(5s);
    EXPECT_EQ(output, (Lines{"a 10"}));

    repeater->append('b', at(9));
    clock->advance(2s);
    EXPECT_EQ(output[1], "b 10.000000001") << "the last time handed on stays";
    EXPECT_EQ(output.back(), "b 11 +2");
}

TEST_F(FrameRepeaterTest, WithoutAHandlerNothingIsArmed) {
    FrameRepeater<char> deaf(1.0);
    EXPECT_THROW(deaf.append('a', at(1)), FrameRepeaterError);
    EXPECT_EQ(clock->pendingTimers(), 0u);
}

TEST_F(FrameRepeaterTest, TheIntervalIsCutToMillisecondsAndATenthOfItIsTolerance) {
    const FrameRepeaterTiming timing(0.0309);
    EXPECT_EQ(timing.sleepInterval(), 30ms);
    EXPECT_EQ(timing.sleepIntervalTolerance(), 3ms);
    EXPECT_EQ(FrameRepeaterTiming(1.025).sleepInterval(), 1025ms) << "whole already, though not as a fraction";
    EXPECT_GT(FrameRepeaterTiming(std::numeric_limits<double>::infinity()).sleepInterval(), 24h);
}

TEST_F(FrameRepeaterTest, SaysAtTraceLevelWhatItDoes) {
    const auto zvLogger = ZVLogger::shared();
    zvLogger->setLogLevel("FrameRepeater", ZVLogLevel::trace);
    const LogCapture log(zvLogger);
    repeater->append('a', at(10));
    repeater->append('b', at(9.5));
    clock->advance(500ms);
    clock->advance(500ms);
    zvLogger->setLogLevel("FrameRepeater", ZVLogLevel::debug);

    const CMTime moved = CMTime::make(10'000'000'001, testing::nanosecondTimescale);
    EXPECT_TRUE(
        log.has(ZVLogLevel::trace, fmt::format("Calling handler with {}, addedTime: nil", at(10).logDescription())));
    EXPECT_TRUE(log.has(ZVLogLevel::trace,
                        fmt::format("Got frame with time before or at lastTime. Calling handler with oldTime:{}, "
                                    "newTime:{}, addedTime:nil",
                                    at(9.5).logDescription(), moved.logDescription())));
    EXPECT_TRUE(log.has(ZVLogLevel::trace, fmt::format("Calling handler with {}, addedTime: {}",
                                                       at(10.5).logDescription(), at(1).logDescription())));
}

TEST_F(FrameRepeaterTest, ARepeaterThatGoesAwayTakesItsRepeatsWithIt) {
    repeater->append('a', at(10));
    repeater->cancel();
    repeater->append('b', at(11));
    repeater.reset();
    clock->advance(5s);
    EXPECT_EQ(output, (Lines{"a 10", "b 11"}));
}

TEST_F(FrameRepeaterTest, ARepeaterMayGoAwayInsideTheHandlerOfARepeat) {
    repeater->setHandler([this](char, CMTime, std::optional<CMTime> addedTime) {
        if (addedTime) {
            repeater.reset();
        }
    });
    repeater->append('a', at(10));
    clock->advance(5s);
    EXPECT_FALSE(repeater);
    EXPECT_EQ(clock->pendingTimers(), 0u);
}

TEST_F(FrameRepeaterTest, GoingAwayWaitsForTheRepeatBeingHandled) {
    std::latch began(1);
    std::latch goesOn(1);
    std::atomic<bool> handled = false;
    repeater->setHandler([&](char, CMTime, std::optional<CMTime> addedTime) {
        if (addedTime) {
            began.count_down();
            goesOn.wait();
            handled = true;
        }
    });
    repeater->append('a', at(10));
    std::jthread time([this] { clock->advance(1s); });
    began.wait();
    std::jthread release([&goesOn] { goesOn.count_down(); });
    repeater.reset();
    EXPECT_TRUE(handled);
}

}  // namespace

// On the real clock, with an interval that repeats all the time, so that sanitizers see frames, repeats, cancels and
// the end meet in every order.
TEST(FrameRepeaterConcurrencyTest, TimesRiseStrictlyWhateverMeets) {
    for (int run = 0; run < 20; ++run) {
        CMTime last = kCMTimeNegativeInfinity;
        FrameRepeater<int> repeater(0.001);
        repeater.setHandler([&last](int, CMTime time, std::optional<CMTime>) {
            EXPECT_LT(last, time);
            last = time;
        });
        std::jthread canceller([&repeater] {
            for (int round = 0; round < 50; ++round) {
                repeater.cancel();
                std::this_thread::yield();
            }
        });
        for (int frame = 0; frame < 200; ++frame) {
            repeater.append(frame, CMTime::make(frame / 2, 1000));
        }
        canceller.join();
    }
}

}  // namespace zorvane
