// From the graph's cycles to samples on the host clock.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/PipeWire/SoundIntake.hpp"
#include "tests/Support/SoundCollector.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using Side = PipeWireSoundDistance::Side;

constexpr AVAudioFormat mono{.commonFormat = AVAudioCommonFormat::float32, .sampleRate = 48000, .channelCount = 1};

class SoundIntakeTest : public testing::Test {
  protected:
    /// A tenth of a second of one level, in cycles of 10 ms that begin at `time`.
    void play(std::uint32_t clock, std::int64_t position, nanoseconds time, float level,
              const PipeWireSoundDistance& distance = {}) {
        const auto frames = static_cast<std::uint32_t>(rate_ / 100);
        const std::vector<float> samples(frames, level);
        for (int cycle = 0; cycle < 10; ++cycle) {
            const std::span<const float> all(samples);
            intake_.take(
                {clock, position + cycle * std::int64_t{frames}, time + cycle * milliseconds(10), rate_, frames},
                {all.first(frames / 3), all.subspan(frames / 3)}, distance);
        }
    }

    /// When sound of this level was first and last heard, in seconds.
    std::pair<double, double> timesOf(float level) const {
        std::pair<double, double> times{-1, -1};
        forEachFrame(heard_.samples(), [&](double time, const float* sample) {
            if (std::abs(*sample - level) < 0.01f) {
                times.first = times.first < 0 ? time : times.first;
                times.second = time;
            }
        });
        return times;
    }

    FFmpegAudioConverting converting_;
    SoundCollector heard_;
    SoundIntake intake_{1, mono, converting_, [this](const CMSampleBuffer& sample) { heard_.add(sample); }};
    double rate_ = 48000;
};

TEST(SoundTimeTest, ASourceWasHeardBeforeItsCycleAndAPlayerIsHeardAfterIt) {
    const SoundCycle cycle{.time = seconds(5), .rate = 48000, .frames = 480};
    const PipeWireLatency latency{.quanta = 1, .frames = 96, .time = milliseconds(3)};
    EXPECT_EQ(heardAt(cycle, {Side::recorded, latency}), seconds(5) - milliseconds(15));
    EXPECT_EQ(heardAt(cycle, {Side::played, latency}), seconds(5) + milliseconds(15));
    EXPECT_EQ(heardAt(cycle, {}), seconds(5));
}

TEST(SoundTimeTest, TheMonitorOfASinkThatDrivesTheGraphIsACycleLate) {
    const SoundCycle cycle{.clock = 30, .time = seconds(5), .rate = 48000, .frames = 480};
    const PipeWireLatency latency{.time = milliseconds(50)};
    const nanoseconds heard = seconds(5) + milliseconds(50);
    EXPECT_EQ(heardAt(cycle, {Side::played, latency, 30}), heard - milliseconds(10));
    EXPECT_EQ(heardAt(cycle, {Side::played, latency, 31}), heard) << "another one drives it";
}

TEST_F(SoundIntakeTest, AnotherClockOfTheGraphIsPlacedByItsTime) {
    play(1, 1000, seconds(10), 0.5f);
    play(2, 77, seconds(11), 0.25f);
    play(2, 77 + 4800, seconds(11) + milliseconds(100), 0.25f);
    intake_.fillUntil(seconds(12));
    EXPECT_NEAR(timesOf(0.5f).first, 10.0, 0.002);
    EXPECT_NEAR(timesOf(0.5f).second, 10.1, 0.002);
    EXPECT_NEAR(timesOf(0.25f).first, 11.0, 0.002);
    EXPECT_NEAR(timesOf(0.25f).second, 11.2, 0.002);
    EXPECT_EQ(breaksIn(heard_.samples()).size(), 1u);
}

TEST_F(SoundIntakeTest, LostCyclesAreAGapOfTheirLength) {
    play(1, 0, seconds(10), 0.5f);
    play(1, 4800 + 960, seconds(10) + milliseconds(120), 0.5f);
    intake_.fillUntil(seconds(11));
    EXPECT_EQ(breaksIn(heard_.samples()), std::vector<std::int64_t>{960});
}

TEST_F(SoundIntakeTest, AnotherRateOfTheGraphGoesOnInTime) {
    play(1, 0, seconds(10), 0.5f);
    rate_ = 44100;
    play(1, 4410, seconds(10) + milliseconds(100), 0.25f);
    intake_.fillUntil(seconds(11));
    EXPECT_EQ(heard_.samples().back().audioBuffer()->format(), mono);
    EXPECT_NEAR(timesOf(0.5f).second, 10.1, 0.001) << "all that was inside is heard";
    EXPECT_NEAR(timesOf(0.25f).first, 10.1, 0.001);
    EXPECT_NEAR(timesOf(0.25f).second, 10.2, 0.001);
    const auto breaks = breaksIn(heard_.samples());
    EXPECT_TRUE(std::ranges::all_of(breaks, [](std::int64_t frames) { return frames > 0 && frames < 48; }));
}

TEST_F(SoundIntakeTest, ARateThatCannotBeConvertedFailsInEachOfItsCyclesOnly) {
    play(1, 0, seconds(10), 0.5f);
    rate_ = 0;
    for (int cycle = 0; cycle < 2; ++cycle) {
        EXPECT_THROW(intake_.take({1, 4800, seconds(10) + milliseconds(100), 0, 0}, {}, {}), NSError);
    }
    rate_ = 48000;
    play(1, 4800, seconds(10) + milliseconds(100), 0.5f);
    intake_.fillUntil(seconds(11));
    EXPECT_NEAR(timesOf(0.5f).second, 10.2, 0.001);
}

TEST(SoundIntakeStartTest, AFirstRateThatCannotBeConvertedFailsLikeAnyOther) {
    FFmpegAudioConverting converting;
    SoundIntake intake(1, mono, converting, [](const CMSampleBuffer&) { FAIL(); });
    for (int cycle = 0; cycle < 2; ++cycle) {
        EXPECT_THROW(intake.take({1, 0, seconds(1), 0, 0}, {}, {}), NSError);
    }
}

TEST_F(SoundIntakeTest, LongerCyclesOfASourceThatWaitsForThemPlaceItAnewAtOnce) {
    const PipeWireSoundDistance distance{.latency = {.quanta = 1}};
    play(1, 0, seconds(10), 0.5f, distance);
    const std::vector<float> frames(1920, 0.25f);
    intake_.take({1, 4800, seconds(10) + milliseconds(140), 48000, 1920}, {frames, {}}, distance);
    intake_.fillUntil(seconds(11));
    EXPECT_NEAR(timesOf(0.5f).second, 10.09, 0.001);
    EXPECT_NEAR(timesOf(0.25f).first, 10.1, 0.001);
}

TEST_F(SoundIntakeTest, SilenceJoinsWhatCameBeforeAndWhatComesAfter) {
    intake_.fillUntil(seconds(9));
    intake_.fillUntil(seconds(10));
    play(1, 0, seconds(10) + nanoseconds(123456), 0.5f);
    intake_.fillUntil(seconds(10));  // a time that has passed changes nothing
    intake_.fillUntil(seconds(10) + milliseconds(300));
    intake_.fillUntil(seconds(10) + milliseconds(400));
    play(1, 90000, seconds(11) + nanoseconds(7777), 0.25f, {Side::played, {.time = milliseconds(50)}});
    intake_.fillUntil(seconds(12));
    EXPECT_NEAR(heard_.samples().front().presentationTimeStamp().seconds(), 9.0, 1e-3);
    EXPECT_NEAR(timesOf(0.5f).first, 10.0, 0.002);
    EXPECT_NEAR(timesOf(0.25f).first, 11.05, 0.002);
    EXPECT_TRUE(breaksIn(heard_.samples()).empty());
}

TEST_F(SoundIntakeTest, SilenceFillsTheTimeBetweenTwoClocksButNotWhatOneLost) {
    intake_.fillUntil(seconds(10));
    play(1, 0, seconds(10), 0.5f);
    play(2, 77, seconds(10) + milliseconds(130), 0.25f);
    play(2, 77 + 4800 + 480, seconds(10) + milliseconds(240), 0.25f);
    intake_.fillUntil(seconds(11));
    EXPECT_NEAR(timesOf(0.25f).first, 10.13, 0.002);
    EXPECT_EQ(breaksIn(heard_.samples()), std::vector<std::int64_t>{480});
}

TEST(SoundIntakeMixTest, ChannelsThatTheOutputDoesNotHaveAreMixedIntoThoseThatItHas) {
    FFmpegAudioConverting converting;
    SoundCollector heard;
    constexpr AVAudioFormat stereo{.sampleRate = 48000, .channelCount = 2};
    SoundIntake intake(8, stereo, converting, [&](const CMSampleBuffer& sample) { heard.add(sample); });
    std::vector<float> frames;
    for (int frame = 0; frame < 4800; ++frame) {
        frames.insert(frames.end(), {0.25f, 0, 0.5f, 0, 0, 0, 0, 0});  // left and centre
    }
    intake.take({1, 0, seconds(1), 48000, 4800}, {frames, {}}, {});
    intake.fillUntil(seconds(1));
    std::size_t right = 0;
    forEachFrame(heard.samples(), [&](double time, const float* sample) {
        if (time > 1.02 && time < 1.08) {
            EXPECT_NEAR(sample[0] - sample[1], 0.25f, 0.001f) << "sides keep their level";
            EXPECT_NEAR(sample[1], 0.5f * std::sqrt(0.5f), 0.01f);
            ++right;
        }
    });
    EXPECT_GT(right, 2000u);
}

}  // namespace
}  // namespace zorvane
