#include "Zorvane/Platform/CoreAudio/SoundAligner.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "AlignerBench.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "tests/Support/AllocationCounter.hpp"

namespace zorvane::testing {
namespace {

using ::testing::SizeIs;

constexpr double frame48k = 1.0 / 48000;

/// The worst lateness of a click in each of so many steps, once the aligner has had ten of them to settle.
double worstOf(AlignerBench& bench, int steps, double seconds) {
    for (int step = 0; step < steps; ++step) {
        bench.play(seconds);
        bench.click();
    }
    bench.aligner.restart();
    EXPECT_THAT(bench.runs, SizeIs(1));
    EXPECT_THAT(bench.clickFrames, SizeIs(steps));
    return bench.worstLateness(10);
}

TEST(SoundAlignerTest, ClicksComeOutAtTheFrameOfTheirHostTimeWhateverTheSourcesRate) {
    for (const double rate : {44100.0, 48000.0, 96000.0}) {
        for (const double deviation : {-0.0002, 0.0, 0.0002}) {
            AlignerBench bench(rate, 48000, {.deviation = deviation}, 1024);
            EXPECT_LT(worstOf(bench, 180, 1), frame48k) << rate << " " << deviation;
            EXPECT_LT(bench.worstLateness(), 0.0005) << rate << " " << deviation;
            EXPECT_NEAR(bench.aligner.rateDeviation(), deviation, 1e-6);
        }
    }
}

TEST(SoundAlignerTest, SoundStaysWithinAMillisecondForFiveMinutesOfJitterAndDrift) {
    double worst = 0;
    for (const double deviation : {-0.0002, 0.0002}) {
        AlignerBench bench(48000, 48000, {.deviation = deviation, .jitter = 0.005});
        worst = std::max(worst, worstOf(bench, 300, 1));
        EXPECT_LT(bench.worstLateness(), 0.0055);
    }
    EXPECT_LT(worst, 0.001);
    RecordProperty("worst_us", std::to_string(worst * 1e6));
}

TEST(SoundAlignerTest, NoDriftAddsUpInTwoHours) {
    AlignerBench bench(8000, 8000, {.deviation = 0.0002, .jitter = 0.005}, 80);  // a low rate, to be quick
    const double worst = worstOf(bench, 1440, 5);
    EXPECT_LT(worst, 0.001);
    RecordProperty("worst_us", std::to_string(worst * 1e6));
}

TEST(SoundAlignerTest, AWrongFirstTimeIsMendedWithoutAJump) {
    AlignerBench bench(48000, 48000, {.constantError = 0.005});
    bench.click();
    bench.clock.constantError = 0;
    for (int step = 0; step < 100; ++step) {
        bench.play(0.1);
        bench.click();
    }
    EXPECT_THAT(bench.runs, SizeIs(1));
    const std::vector<double> late = bench.lateness();
    EXPECT_NEAR(late.front(), 0.005, frame48k);
    for (std::size_t click = 1; click < late.size(); ++click) {
        EXPECT_LE(std::abs(late[click] - late[click - 1]), 0.0025 * 0.11 + frame48k);
    }
    EXPECT_LT(std::abs(late[50]), 0.001);
    EXPECT_LT(std::abs(late.back()), 0.0002);
}

TEST(SoundAlignerTest, LostFramesAreAGapInTheirPlace) {
    for (const double rate : {44100.0, 48000.0}) {
        for (const std::int64_t lost : {1, 20, 441, 5000, 96000}) {
            AlignerBench bench(rate, 48000, {.deviation = 0.0002, .jitter = 0.0005});
            bench.play(30);
            bench.click();
            bench.position += lost;
            bench.click();
            bench.play(0.1);
            ASSERT_THAT(bench.runs, SizeIs(2)) << rate << " " << lost;
            const double gap = static_cast<double>(lost) / (rate * 1.0002) * 48000;
            EXPECT_NEAR(static_cast<double>(bench.runs[1].first - bench.runs[0].end), gap, 1.5) << rate << " " << lost;
            ASSERT_THAT(bench.clickFrames, SizeIs(2));
            const std::vector<double> late = bench.lateness();
            EXPECT_NEAR(late[1], late[0], 1.5 * frame48k) << rate << " " << lost;
        }
    }
}

TEST(SoundAlignerTest, SoundOnEitherSideOfAGapIsCompleteAndDoesNotReachAcross) {
    AlignerBench bench(48000, 48000, {});
    bench.keepsSamples = true;
    bench.level = 0.5;
    bench.playFrames(4800);
    bench.position += 100;
    bench.level = 0;
    bench.playFrames(4800);
    bench.level = 0.5;
    bench.playFrames(4800);
    bench.aligner.restart();
    ASSERT_THAT(bench.runs, SizeIs(2));
    EXPECT_EQ(bench.runs[0].length(), 4800);
    EXPECT_EQ(bench.runs[1].first, bench.runs[0].end + 100);
    EXPECT_NEAR(static_cast<double>(bench.runs[1].length()), 9600, 1);
    const auto isSoundOfBefore = [](float value) { return std::abs(value - 0.5F) < 1e-4F; };
    EXPECT_EQ(std::count_if(bench.runs[0].samples.begin(), bench.runs[0].samples.end() - 32, isSoundOfBefore),
              4800 - 32);
    EXPECT_GT(bench.runs[0].samples.back(), 0.2);
    EXPECT_TRUE(std::all_of(bench.runs[1].samples.begin(), bench.runs[1].samples.begin() + 4700,
                            [](float value) { return std::abs(value) < 1e-4F; }));
}

TEST(SoundAlignerTest, WhatASourceGivesAgainIsCutOff) {
    AlignerBench bench(48000, 48000, {}, 960);
    bench.keepsSamples = true;
    bench.level = 0.5;
    bench.playFrames(4800);
    bench.position -= 4800;
    bench.level = -0.5;
    bench.playFrames(4800 - 480);  // nothing new
    bench.playFrames(960);         // half of it new
    bench.aligner.restart();
    ASSERT_THAT(bench.runs, SizeIs(1));
    EXPECT_EQ(bench.runs[0].length(), 5280);
    EXPECT_EQ(std::count_if(bench.runs[0].samples.begin(), bench.runs[0].samples.end(), [](float v) { return v < 0; }),
              480);
}

TEST(SoundAlignerTest, AfterARestartTimeGoesOnAndSoundIsPlacedAnew) {
    AlignerBench bench(48000, 48000, {.deviation = 0.0001});
    bench.play(10);
    bench.click();
    bench.aligner.restart();
    const std::int64_t heard = bench.runs[0].end;
    EXPECT_NEAR(static_cast<double>(heard) / 48000, bench.trueSeconds(bench.position), 0.0003);

    bench.positionOffset = -bench.position;  // another source, which counts from 0 and began 2 s later
    bench.clock.startSeconds += 2;
    bench.click();
    bench.play(1);
    ASSERT_THAT(bench.runs, SizeIs(2));
    EXPECT_NEAR(static_cast<double>(bench.runs[1].first - heard), 2 * 48000, 20);
    EXPECT_LT(bench.worstLateness(), 0.0003);

    bench.aligner.restart();
    bench.clock.startSeconds -= 0.5;  // half a second of sound that was there already
    bench.clock.deviation = -0.001;
    bench.positionOffset = 7;
    bench.play(2);
    EXPECT_THAT(bench.runs, SizeIs(2));
    bench.click();
    bench.play(1);
    EXPECT_LT(bench.worstLateness(), 0.003);
}

TEST(SoundAlignerTest, SingleStrayTimesChangeNothing) {
    AlignerBench bench(48000, 48000, {});
    bench.play(10);
    for (int step = 0; step < 20; ++step) {
        bench.clock.constantError = step % 2 == 0 ? 0.3 : -0.3;
        bench.playFrames(480);
        bench.clock.constantError = 0;
        bench.click();
    }
    EXPECT_THAT(bench.runs, SizeIs(1));
    EXPECT_LT(bench.worstLateness(), frame48k);
}

TEST(SoundAlignerTest, TimesThatStayOffAreBelieved) {
    for (const double shift : {0.08, -0.08}) {
        AlignerBench bench(48000, 48000, {.deviation = 0.0002});
        bench.play(20);
        bench.clock.startSeconds += shift;
        bench.play(0.3);
        bench.click();
        bench.play(1);
        EXPECT_LT(bench.worstLateness(), 0.0002);
        if (shift < 0) {
            EXPECT_THAT(bench.runs, SizeIs(1));
        } else {
            ASSERT_THAT(bench.runs, SizeIs(2));
            EXPECT_NEAR(static_cast<double>(bench.runs[1].first - bench.runs[0].end), shift * 48000, 2);
        }
    }
}

TEST(SoundAlignerTest, ASourceThatSleptIsHeardAfterItsSleep) {
    AlignerBench bench(48000, 48000, {});
    bench.play(20);
    bench.clock.startSeconds += 10;
    bench.click();
    bench.play(1);
    ASSERT_THAT(bench.runs, SizeIs(2));
    EXPECT_EQ(bench.runs[1].first - bench.runs[0].end, 480000);
    EXPECT_LT(bench.worstLateness(), frame48k);
}

TEST(SoundAlignerTest, ACountThatJumpsAgainstTheHostTimeIsANewCount) {
    for (const std::int64_t offset : {-480000L, -9600L, 9600L, 1L << 40}) {
        AlignerBench bench(48000, 48000, {});
        bench.play(10);
        bench.positionOffset = offset;
        bench.click();
        bench.play(1);
        EXPECT_THAT(bench.runs, SizeIs(1)) << offset;
        EXPECT_LT(bench.worstLateness(), 2 * frame48k) << offset;
    }
}

TEST(SoundAlignerTest, ASourceWithAWrongRateKeepsItsTime) {
    for (const double nominal : {44100.0, 52000.0}) {
        AlignerBench bench(nominal, 48000, {.deviation = 48000 / nominal - 1});
        for (int step = 0; step < 100; ++step) {
            bench.play(0.25);
            const double heardUntil = static_cast<double>(bench.runs.back().end) / 48000;
            // Up to 11 ms are still inside.
            ASSERT_NEAR(heardUntil + 0.0055, bench.trueSeconds(bench.position), 0.07 + 0.0055);
        }
    }
}

TEST(SoundAlignerTest, FormatsAreConvertedOnTheWay) {
    FFmpegAudioConverting converting;
    const AVAudioFormat output{AVAudioCommonFormat::float32, 48000, 2};
    std::int64_t frames = 0;
    const auto hear = [&](const CMSampleBuffer& sample) {
        EXPECT_EQ(sample.formatDescription()->audioFormat, output);
        EXPECT_EQ(sample.duration(), CMTime::make(sample.numSamples(), 48000));
        EXPECT_EQ(sample.presentationTimeStamp(), CMTime::make(5 * 48000 + frames, 48000));
        const auto* samples = reinterpret_cast<const float*>(sample.audioBuffer()->bytes().data());
        EXPECT_NEAR(samples[0], 0.25, 1e-3);
        EXPECT_NEAR(samples[1], 0.25, 1e-3);
        frames += sample.numSamples();
    };
    const std::vector<std::int16_t> second(44100, 8192);
    SoundAligner aligner({AVAudioCommonFormat::int16, 44100, 1}, output, converting, hear);
    aligner.process({7, std::chrono::seconds(5), std::as_bytes(std::span(second))});
    aligner.restart();
    EXPECT_EQ(frames, 48000);

    EXPECT_THROW(SoundAligner({AVAudioCommonFormat::int16, 44100, 12}, output, converting, hear), NSError);
}

TEST(SoundAlignerTest, NothingIsAllocatedPerBlock) {
    if (!AllocationCounter::isAvailable()) {
        GTEST_SKIP() << "allocations can't be counted here";
    }
    FFmpegAudioConverting converting;
    const AVAudioFormat stereo{AVAudioCommonFormat::float32, 48000, 2};
    std::vector<CMSampleBuffer> kept(8);  // a consumer that is some samples behind
    std::size_t next = 0;
    SoundAligner aligner(stereo, stereo, converting,
                         [&](const CMSampleBuffer& sample) { kept[next++ % kept.size()] = sample; });
    const std::vector<float> block(2 * 256);
    const auto play = [&](std::int64_t from, std::int64_t to) {
        for (std::int64_t index = from; index < to; ++index) {
            const std::chrono::nanoseconds hostTime(index * 256 * 1'000'000'000 / 48000 + index % 3 * 100'000);
            aligner.process({index * 256, hostTime, std::as_bytes(std::span(block))});
        }
    };
    play(0, 100);
    play(110, 120);
    const AllocationCounter allocations;
    play(120, 1000);
    play(1010, 2000);
    EXPECT_EQ(allocations.count(), 0U);
}

}  // namespace
}  // namespace zorvane::testing
