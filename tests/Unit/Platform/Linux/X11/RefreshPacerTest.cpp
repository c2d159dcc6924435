#include "Zorvane/Platform/Linux/X11/Cursor/RefreshPacer.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace zorvane {
namespace {

using namespace std::chrono_literals;
using Time = RefreshPacer::Time;

constexpr Time interval = 20ms;

/// The times of the calls that changes at these times bring about, by one who comes `late` to each of them.
std::vector<Time> calls(const std::vector<Time>& changes, Time late = 0ms) {
    RefreshPacer pacer;
    std::vector<Time> made;
    auto change = changes.begin();
    for (Time now = 0ms; now < 10s;) {
        for (; change != changes.end() && *change <= now; ++change) {
            pacer.noteChange(now);
        }
        const auto next = pacer.next(now);
        if (next.step == RefreshPacer::Step::call) {
            made.push_back(now);
            pacer.noteCall(now, interval);
        } else if (next.step == RefreshPacer::Step::pause) {
            now = *next.deadline + late;
        } else if (change != changes.end()) {
            now = *change;
        } else {
            break;
        }
    }
    return made;
}

TEST(RefreshPacer, CallsAtOnceThenAtEachRefreshUntilNothingHasChangedForAWhile) {
    EXPECT_EQ(calls({}), std::vector<Time>());
    EXPECT_EQ(calls({1s}), (std::vector<Time>{1000ms, 1020ms, 1040ms, 1060ms, 1080ms}));
    EXPECT_EQ(calls({1s, 3s}).size(), 10U);
    EXPECT_EQ(calls({1s, 3s})[5], 3s) << "a rest doesn't delay the next call";
}

TEST(RefreshPacer, ManyChangesGiveOneCallForEachRefreshAndOneAfterTheLast) {
    std::vector<Time> changes;
    for (Time time = 0ms; time < 1s; time += 1ms) {
        changes.push_back(time);
    }
    const std::vector<Time> made = calls(changes);
    EXPECT_EQ(made.size(), 55U);
    for (std::size_t index = 1; index < made.size(); ++index) {
        EXPECT_EQ(made[index] - made[index - 1], interval);
    }
    EXPECT_GT(made.back(), changes.back());
}

TEST(RefreshPacer, CallsThatComeLateAreNotMadeUpForButDontShiftTheOthers) {
    std::vector<Time> changes;
    for (Time time = 0ms; time < 1s; time += 1ms) {
        changes.push_back(time);
    }
    EXPECT_EQ(calls(changes, 5ms).size(), 55U);
    const std::vector<Time> made = calls(changes, 70ms);
    EXPECT_LT(made.size(), 30U);
}

}  // namespace
}  // namespace zorvane
