#include "Zorvane/Internal/RecordingIntervalBoundedRetimer.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <thread>

#include "tests/Support/Timeline.hpp"

namespace zorvane {
namespace {

using testing::at;
using testing::Lines;
using testing::recording;
using Retimer = RecordingIntervalBoundedRetimer<char>;
using Error = RecordingIntervalBoundedRetimerError;
using Position = RecordingIntervalBoundedRetimerItemPosition;

class RecordingIntervalBoundedRetimerTest : public ::testing::Test {
  protected:
    void listenTo(Retimer& subject) {
        subject.setHandler([this](Position position, char item, CMTime time) {
            output.push_back(fmt::format("{}{} {}", position == Position::first ? "first " : "", item, time.seconds()));
        });
    }

    /// Appends 'a', 'b', 'c', ... at these times.
    static void append(Retimer& subject, std::initializer_list<double> times, char item = 'a') {
        for (const double time : times) {
            subject.append(item++, at(time));
        }
    }

    const std::shared_ptr<VolatileRecordingInterval> interval = recording();
    Retimer retimer{StableRecordingInterval(interval), 3, false};
    Lines output;

    void SetUp() override { listenTo(retimer); }
};

template <class Case, class Call>
Case thrownCase(Call call) {
    try {
        call();
    } catch (const Error& error) {
        if (const auto* which = std::get_if<Case>(&error.which())) {
            return *which;
        }
        ADD_FAILURE() << "threw " << error.what();
        return {};
    }
    ADD_FAILURE() << "threw nothing";
    return {};
}

TEST_F(RecordingIntervalBoundedRetimerTest, OpensWithTheItemThatShowsAtTheStart) {
    struct Case {
        const char* description;
        std::vector<double> before;
        double from;
        std::vector<double> after;
        Lines expected;
    };
    const std::vector<Case> cases{
        {"the newest item held is stretched to the start", {1, 2, 3, 4, 5}, 5.5, {6}, {"first e 5.5", "f 6"}},
        {"with none before it, the nearest is pulled to it", {}, 3.5, {4, 5}, {"first a 3.5", "b 5"}},
        {"an item at the start comes once", {1}, 2, {2, 3}, {"first b 2", "c 3"}},
        {"a start between items that are held already", {1, 2, 3}, 1.5, {4}, {"first a 1.5", "b 2", "c 3", "d 4"}},
        {"items that fell out are gone", {1, 2, 3, 4, 5}, 1.5, {6}, {"first c 1.5", "d 4", "e 5", "f 6"}},
        {"nothing opens before an item reaches the start", {1, 2}, 5, {3, 4}, {}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.description);
        const auto started = recording();
        Retimer subject(StableRecordingInterval(started), 3, false);
        output.clear();
        listenTo(subject);
        char item = 'a';
        for (const double time : row.before) {
            subject.append(item++, at(time));
        }
        EXPECT_EQ(output, Lines()) << "not started yet";
        started->start(row.from);
        for (const double time : row.after) {
            subject.append(item++, at(time));
        }
        EXPECT_EQ(output, row.expected);
    }
}

TEST_F(RecordingIntervalBoundedRetimerTest, AnItemAtOrAfterTheEndClosesTheOutputAndLaterOnesAreIgnored) {
    for (const double last : {4.0, 7.0}) {
        Retimer subject(StableRecordingInterval(recording(1, 4)), 3, false);
        output.clear();
        listenTo(subject);
        append(subject, {1, 2, 3, last, 8, 9});
        EXPECT_EQ(output, (Lines{"first a 1", "b 2", "c 3", "c 4"}));
        subject.append('z', at(0));
        subject.finish();
        EXPECT_EQ(output.size(), 4u) << "closed";
    }
}

TEST_F(RecordingIntervalBoundedRetimerTest, TheItemBeforeTheStartAlsoClosesARecordingWithoutItems) {
    append(retimer, {1, 2});
    interval->start(3);
    interval->stop(4);
    append(retimer, {5}, 'c');
    EXPECT_EQ(output, (Lines{"first b 3", "b 4"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, AnOnlyItemAfterTheEndStandsForTheWholeRecording) {
    interval->start(3);
    interval->stop(4);
    append(retimer, {5});
    EXPECT_EQ(output, (Lines{"first a 3", "a 4"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, FinishShowsTheLastItemUntilTheEnd) {
    interval->start(1);
    append(retimer, {1, 2, 3});
    interval->stop(9.5);
    retimer.finish();
    EXPECT_EQ(output, (Lines{"first a 1", "b 2", "c 3", "c 9.5"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, FinishOpensWithWhatCameBeforeTheStart) {
    append(retimer, {1, 2});
    interval->start(3);
    interval->stop(5);
    retimer.finish();
    EXPECT_EQ(output, (Lines{"first b 3", "b 5"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, FinishHandsOnItemsThatWereHeldWhenTheStartWasSet) {
    append(retimer, {1, 2, 3});
    interval->start(1.5);
    interval->stop(2.5);
    retimer.finish();
    EXPECT_EQ(output, (Lines{"first a 1.5", "b 2", "b 2.5"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, FinishWithoutItemsIsAnErrorAndSoIsASecondFinish) {
    thrownCase<Error::FinishedWithoutFrames>([&] { retimer.finish(); });
    interval->start(1);
    append(retimer, {1});
    interval->stop(2);
    retimer.finish();
    thrownCase<Error::FinishedWithoutFrames>([&] { retimer.finish(); });
    EXPECT_EQ(output, (Lines{"first a 1", "a 2"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, ARecordingThatNeverStartedHasNoOutput) {
    append(retimer, {1, 2});
    interval->stop(3);
    retimer.finish();
    append(retimer, {4}, 'c');
    EXPECT_EQ(output, Lines());
}

TEST_F(RecordingIntervalBoundedRetimerTest, RefusesTimesThatDoNotRiseAndStaysUsable) {
    interval->start(1);
    append(retimer, {1, 2});
    const auto repeated = thrownCase<Error::WrongOrder>([&] { retimer.append('x', at(2)); });
    EXPECT_EQ(repeated.previous, at(2));
    EXPECT_EQ(repeated.current, at(2));
    thrownCase<Error::WrongOrder>([&] { retimer.append('x', at(1.5)); });
    for (const CMTime noNumber :
         {kCMTimeInvalid, kCMTimePositiveInfinity, kCMTimeNegativeInfinity, kCMTimeIndefinite}) {
        thrownCase<Error::WrongOrder>([&] { retimer.append('x', noNumber); });
    }
    append(retimer, {3}, 'c');
    EXPECT_EQ(output, (Lines{"first a 1", "b 2", "c 3"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, ARecordingWithinOneTickHasNoPlaceForItsEnd) {
    interval->start(10.0);
    interval->stop(10.04);
    const auto thrown = thrownCase<Error::TimescaleExceedsSession>([&] {
        retimer.append('a', at(9.9, 10));
        retimer.append('b', at(10.1, 10));
    });
    EXPECT_EQ(thrown.timescale, 0.1);
    EXPECT_NEAR(thrown.intervalDuration, 0.04, 1e-9);
    EXPECT_EQ(output, (Lines{"first a 10"}));
    EXPECT_NO_THROW(retimer.finish()) << "closed already";
    EXPECT_EQ(output.size(), 1u);
}

TEST_F(RecordingIntervalBoundedRetimerTest, AnItemThatStandsAtTheRoundedEndIsNotRepeatedThere) {
    interval->start(1);
    append(retimer, {1}, 'a');
    retimer.append('b', at(3, 10));
    interval->stop(3.01);
    retimer.finish();
    EXPECT_EQ(output, (Lines{"first a 1", "b 3"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, ZeroBasedTimesRunFromZeroToTheLengthOfTheRecording) {
    Retimer subject(StableRecordingInterval(recording(100.25, 104)), 1, true);
    listenTo(subject);
    append(subject, {100, 101.5, 103});
    subject.finish();
    EXPECT_EQ(output, (Lines{"first a 0", "b 1.25", "c 2.75", "c 3.75"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, AnErrorOfTheHandlerPassesThroughAndTheOutputGoesOn) {
    interval->start(1);
    bool fails = true;
    retimer.setHandler([&](Position, char item, CMTime time) {
        if (fails) {
            throw std::runtime_error("disk");
        }
        output.push_back(fmt::format("{} {}", item, time.seconds()));
    });
    retimer.append('a', at(0.5));
    EXPECT_THROW(retimer.append('b', at(1.5)), std::runtime_error);
    fails = false;
    append(retimer, {2, 3}, 'c');
    EXPECT_EQ(output, (Lines{"c 2", "d 3"}));
}

TEST_F(RecordingIntervalBoundedRetimerTest, WithoutAHandlerAReadyItemIsAnError) {
    Retimer subject(StableRecordingInterval(recording(1)), 1, false);
    EXPECT_NO_THROW(subject.append('a', at(0.5)));
    thrownCase<Error::HandlerNotSet>([&] { subject.append('b', at(1.5)); });
}

// What the output has to be, told from all items at once.
Lines expectedOutput(const std::vector<CMTime>& times, double from, double until) {
    const auto after = std::upper_bound(times.begin(), times.end(), at(from));
    const std::size_t opening = after == times.begin() ? 0 : static_cast<std::size_t>(after - times.begin()) - 1;
    Lines lines{fmt::format("first {} {}", opening, from)};
    std::size_t shown = opening;
    for (std::size_t index = opening + 1; index < times.size() && times[index] < at(until); ++index) {
        lines.push_back(fmt::format("{} {}", index, times[index].seconds()));
        shown = index;
    }
    lines.push_back(fmt::format("{} {}", shown, until));
    return lines;
}

TEST(RecordingIntervalBoundedRetimerPropertyTest, AnyStreamBecomesTheSameOutputAsAllItsItemsAtOnce) {
    std::mt19937 random(20260101);
    const auto below = [&random](int limit) { return std::uniform_int_distribution(0, limit - 1)(random); };
    for (int run = 0; run < 3000; ++run) {
        SCOPED_TRACE(fmt::format("run {}", run));
        std::vector<CMTime> times;
        std::int64_t milliseconds = 1000;
        for (int count = 1 + below(12); count > 0; --count) {
            milliseconds += 1 + below(run % 2 == 0 ? 3 : 400);
            times.push_back(CMTime::make(milliseconds, 1000));
        }
        const std::int64_t fromMilliseconds = 990 + below(static_cast<int>(milliseconds) - 900);
        const double from = static_cast<double>(fromMilliseconds) / 1000;

        const auto interval = testing::recording();
        RecordingIntervalBoundedRetimer<std::size_t> retimer(StableRecordingInterval(interval), 3, false);
        Lines output;
        CMTime last = kCMTimeNegativeInfinity;
        retimer.setHandler([&](Position position, std::size_t item, CMTime time) {
            EXPECT_LT(last, time);
            last = time;
            output.push_back(fmt::format("{}{} {}", position == Position::first ? "first " : "", item, time.seconds()));
        });
        // The start may be seen when the ring holds an item after it already, the stop before its last items have come.
        const auto count = [&times](auto position) { return static_cast<int>(position - times.begin()); };
        const int startAt = std::min(count(std::upper_bound(times.begin(), times.end(), at(from))) + below(2),
                                     static_cast<int>(times.size()));
        const std::int64_t newest = startAt > 0 ? times[static_cast<std::size_t>(startAt) - 1].value : 0;
        const double until = static_cast<double>(std::max(fromMilliseconds, newest) + 2 + below(1000)) / 1000;
        const int stopAt = std::max(count(std::lower_bound(times.begin(), times.end(), at(until))) - below(3), startAt);
        for (std::size_t index = 0; index <= times.size(); ++index) {
            if (index == static_cast<std::size_t>(startAt)) {
                interval->start(from);
            }
            if (index == static_cast<std::size_t>(stopAt)) {
                interval->stop(until);
            }
            if (index < times.size()) {
                retimer.append(index, times[index]);
            }
        }
        retimer.finish();
        EXPECT_EQ(output, expectedOutput(times, from, until)) << "from " << from << " until " << until;
    }
}

TEST(RecordingIntervalBoundedRetimerConcurrencyTest, AFinishAmidAppendsEndsTheOutputExactlyOnce) {
    for (int run = 0; run < 50; ++run) {
        const auto interval = testing::recording(1);
        RecordingIntervalBoundedRetimer<int> retimer(StableRecordingInterval(interval), 3, false);
        std::vector<CMTime> output;
        retimer.setHandler([&](Position, int, CMTime time) { output.push_back(time); });
        retimer.append(0, at(1));
        std::jthread capture([&retimer] {
            for (int frame = 1; frame < 200; ++frame) {
                retimer.append(frame, CMTime::make(1000 + frame, 1000));
            }
        });
        std::jthread stop([&] {
            interval->stop(1.5);
            retimer.finish();
        });
        capture.join();
        stop.join();
        ASSERT_GE(output.size(), 2u);
        EXPECT_EQ(output.front(), at(1));
        EXPECT_EQ(output.back(), at(1.5));
        EXPECT_TRUE(std::is_sorted(output.begin(), output.end()));
        EXPECT_EQ(std::adjacent_find(output.begin(), output.end()), output.end()) << "strictly rising";
    }
}

}  // namespace
}  // namespace zorvane
