#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "WriterBench.hpp"
#include "Zorvane/Platform/FFmpeg/WriterQueue.hpp"
#include "tests/Support/AllocationCounter.hpp"

namespace zorvane::testing {
namespace {

using Status = AVAssetWriter::Status;

constexpr std::uint32_t blockFrames = 480;  // 10 ms at 48 kHz

/// A movie of sound alone, of a session that starts at 100 s.
struct SoundBench : WriterBench {
    explicit SoundBench(const AVAudioSettings& settings = stereoSound(),
                        AVFileType fileType = AVFileType::quickTimeMovie)
        : WriterBench(settings, {}, fileType) {
        EXPECT_TRUE(start(CMTime::make(100, 1))) << textOf(writer->error());
    }

    /// Seconds from the session's start.
    static CMTime at(double seconds) { return CMTime::fromSeconds(100 + seconds, 1'000'000'000); }

    /// Appends `frames` frames from `seconds` on, in blocks of 10 ms.
    void play(double seconds, std::uint32_t frames, const SoundLevel& level, const AVAudioFormat& format = stereo48) {
        const auto block = static_cast<std::uint32_t>(format.sampleRate / 100);
        for (std::uint32_t first = 0; first < frames; first += block) {
            ASSERT_TRUE(append(
                soundAt(at(seconds + first / format.sampleRate), format, std::min(block, frames - first),
                        [&](std::uint32_t frame, std::uint32_t channel) { return level(first + frame, channel); })));
        }
    }

    MovieSound finishAt(double seconds) {
        writer->endSession(at(seconds));
        EXPECT_EQ(finish(), Status::completed) << textOf(writer->error());
        return sound();
    }
};

TEST(FFmpegAssetWriterSoundTest, TrackLastsFromTheSessionsStartToItsEndToTheSample) {
    for (const AVFileType fileType : {AVFileType::quickTimeMovie, AVFileType::mpeg4, AVFileType::appleM4A}) {
        SoundBench bench(stereoSound(), fileType);
        bench.play(-0.005, 48'000, clickAt(240 + 24'000));
        const MovieSound sound = bench.finishAt(0.9);

        EXPECT_EQ(sound.codec, "aac");
        EXPECT_EQ(sound.timescale, 48'000);
        EXPECT_EQ(sound.startTime, 0);
        EXPECT_EQ(sound.duration, 43'200);
        EXPECT_EQ(sound.frameCount(), 43'200);
        EXPECT_EQ(sound.peak(0, 43'200), 24'000);
        EXPECT_EQ(movieBoxes(bench.file->bytes()), "ftyp free mdat moov");
    }
}

TEST(FFmpegAssetWriterSoundTest, EndThatIsKnownLateStillCutsToTheSample) {
    SoundBench bench;
    bench.play(0, 3 * 48'000, clickAt(60'000));
    bench.clock->advance(std::chrono::seconds(1));  // all of it is in the file
    const MovieSound sound = bench.finishAt(1.25001);
    EXPECT_EQ(sound.duration, 60'000);
    EXPECT_EQ(sound.frameCount(), 60'000);
    EXPECT_LT(sound.loudest(0, 59'000), 0.01);  // the click is the first frame behind the end
}

TEST(FFmpegAssetWriterSoundTest, SilenceStandsWhereThereIsNoSound) {
    SoundBench bench;
    bench.play(0.2, 4'800, steady(0.5));     // late
    bench.play(1.5, 4'800, clickAt(1'000));  // after a gap of 1.2 s
    const MovieSound sound = bench.finishAt(3);

    EXPECT_EQ(sound.duration, 144'000);
    EXPECT_EQ(sound.frameCount(), 144'000);
    EXPECT_LT(sound.loudest(0, 9'600 - 600), 0.01);
    EXPECT_GT(sound.loudest(9'600, 9'700), 0.3);
    EXPECT_LT(sound.loudest(14'400 + 1'100, 72'000), 0.001);
    EXPECT_EQ(sound.peak(72'000 - 4'000, 80'000), 73'000);
    EXPECT_LT(sound.loudest(78'000, 144'000), 0.001);
}

TEST(FFmpegAssetWriterSoundTest, OverlapIsCutAndWhatFollowsKeepsItsPlace) {
    SoundBench bench;
    bench.play(0, 4'800, steady(0));
    bench.play(0.05, 4'800, clickAt(1'000));  // at 3400, where silence was already
    bench.play(0.15, 4'800, clickAt(1'000));
    const MovieSound sound = bench.finishAt(0.3);
    EXPECT_LT(sound.loudest(0, 7'000), 0.05);
    EXPECT_EQ(sound.peak(0, 14'400), 8'200);
}

TEST(FFmpegAssetWriterSoundTest, SessionWithoutSoundIsATrackOfSilence) {
    SoundBench bench;
    const MovieSound sound = bench.finishAt(5.5);
    EXPECT_EQ(sound.duration, 264'000);
    EXPECT_EQ(sound.frameCount(), 264'000);
    EXPECT_EQ(sound.loudest(0, 264'000), 0);
    EXPECT_LT(bench.file->bytes().size(), 12'000U);
}

TEST(FFmpegAssetWriterSoundTest, SoundAfterLongSilenceIsWhole) {
    SoundBench bench;
    bench.play(0, 48'000, steady(0));
    const auto tone = [](std::uint32_t frame, std::uint32_t) { return 0.5 * std::sin(frame * 0.1); };
    bench.play(1, 48'000, tone);
    const MovieSound sound = bench.finishAt(2);
    double error = 0;
    for (std::int64_t frame = 0; frame < 48'000; ++frame) {
        error += std::pow(sound.at(48'000 + frame) - tone(static_cast<std::uint32_t>(frame), 0), 2);
    }
    EXPECT_LT(std::sqrt(error / 48'000), 0.02);  // the tone's is 0.35
}

struct SourceCase {
    std::string name;
    AVAudioFormat source;
    double rate;
    std::int32_t channels;
};

class SourceFormatTest : public ::testing::TestWithParam<SourceCase> {};

TEST_P(SourceFormatTest, KeepsLengthAndTheClicksPlace) {
    const SourceCase& test = GetParam();
    AVAudioSettings settings = stereoSound(test.rate);
    settings.numberOfChannels = test.channels;
    SoundBench bench(settings);
    const double sourceRate = test.source.sampleRate;
    bench.play(0.1, static_cast<std::uint32_t>(sourceRate), clickAt(static_cast<std::uint32_t>(sourceRate / 2)),
               test.source);
    const MovieSound sound = bench.finishAt(1.25);

    const double rate = sound.sampleRate;
    EXPECT_EQ(sound.channels, test.channels);
    EXPECT_EQ(sound.timescale, sound.sampleRate);
    EXPECT_EQ(sound.duration, std::lround(1.25 * rate));
    EXPECT_EQ(sound.frameCount(), sound.duration);
    for (int channel = 0; channel < sound.channels; ++channel) {
        if (channel != 3) {  // the deep one of six
            EXPECT_NEAR(static_cast<double>(sound.peak(0, sound.duration, channel)), 0.6 * rate, 1) << channel;
        }
    }
    EXPECT_GT(sound.loudest(0, sound.duration), 0.05);
}

INSTANTIATE_TEST_SUITE_P(
    Sources, SourceFormatTest,
    ::testing::Values(SourceCase{"Int16", {AVAudioCommonFormat::int16, 48000, 2}, 48000, 2},
                      SourceCase{"Int32At44100", {AVAudioCommonFormat::int32, 44100, 2}, 44100, 2},
                      SourceCase{"Float44100To48000", {AVAudioCommonFormat::float32, 44100, 2}, 48000, 2},
                      SourceCase{"MonoTelephone", {AVAudioCommonFormat::int16, 8000, 1}, 48000, 2},
                      SourceCase{"StereoToMono", {AVAudioCommonFormat::float32, 96000, 2}, 44100, 1},
                      SourceCase{"RateAboveAAC", {AVAudioCommonFormat::int32, 192000, 2}, 192000, 2},
                      SourceCase{"RateBetween", {AVAudioCommonFormat::float32, 48000, 1}, 47000, 1},
                      SourceCase{"SixChannels", {AVAudioCommonFormat::float32, 48000, 6}, 48000, 6}),
    [](const auto& testCase) { return testCase.param.name; });

TEST(FFmpegAssetWriterSoundTest, FormatThatChangesLosesNothing) {
    SoundBench bench;
    bench.play(0, 24'000, steady(0.25));
    bench.play(0.5, 22'050, steady(0.25), {AVAudioCommonFormat::int16, 44100, 1});
    bench.play(1.0, 16'000, steady(0.25), {AVAudioCommonFormat::int32, 32000, 2});
    bench.play(1.5, 24'000, clickAt(12'000));
    const MovieSound sound = bench.finishAt(2);
    for (std::int64_t frame = 2'000; frame < 70'000; frame += 10) {
        ASSERT_NEAR(sound.at(frame, 0), 0.25, 0.05) << frame;
        ASSERT_NEAR(sound.at(frame, 1), 0.25, 0.05) << frame;
    }
    EXPECT_EQ(sound.peak(76'000, 96'000), 84'000);
}

TEST(FFmpegAssetWriterSoundTest, SamplesThatAreNoNumbersDoNotEndTheRecording) {
    using Limits = std::numeric_limits<double>;
    SoundBench bench;
    double begin = 0;
    for (const double level : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1e30, -1e6}) {
        bench.play(begin, 4'800, steady(level));
        begin += 0.1;
    }
    bench.play(0.5, 24'000, clickAt(12'000));
    EXPECT_EQ(bench.finishAt(1).peak(30'000, 48'000), 36'000);
}

TEST(FFmpegAssetWriterSoundTest, WithoutAnEndTheTrackEndsWithItsLastFrame) {
    SoundBench bench;
    bench.play(0, 5'000, steady(0.1));
    ASSERT_EQ(bench.finish(), Status::completed);
    EXPECT_EQ(bench.sound().duration, 5'000);
}

TEST(FFmpegAssetWriterSoundTest, MovieWithoutASessionIsAnError) {
    WriterBench bench(stereoSound());
    ASSERT_TRUE(bench.writer->startWriting());
    EXPECT_EQ(bench.finish(), Status::failed);
    EXPECT_NE(textOf(bench.writer->error()).find("No sample"), std::string::npos);
}

TEST(FFmpegAssetWriterSoundTest, QueueHoldsTwoSecondsOfTheShortestBlocks) {
    WriterBench bench(stereoSound());
    ASSERT_TRUE(bench.writer->startWriting());
    std::size_t taken = 0;
    while (bench.input->isReadyForMoreMediaData()) {
        ASSERT_TRUE(
            bench.append(soundAt(CMTime::make(static_cast<std::int64_t>(taken), 200), stereo48, 240, steady(0.1))));
        ++taken;
    }
    EXPECT_EQ(taken, 400U);
    EXPECT_FALSE(bench.append(soundAt(CMTime::make(2, 1), stereo48, 240, steady(0.1))));
    bench.writer->startSession(kCMTimeZero);
    Activity::waitUntilIdle();
    EXPECT_TRUE(bench.append(soundAt(CMTime::make(2, 1), stereo48, 240, steady(0.1))));
    ASSERT_EQ(bench.finish(), Status::completed);
    EXPECT_EQ(bench.sound().duration, 96'240);
}

TEST(FFmpegAssetWriterSoundTest, AppendingAllocatesNothing) {
    if (!AllocationCounter::isAvailable()) {
        GTEST_SKIP() << "a sanitizer's allocator can't be counted";
    }
    SoundBench bench;
    const CMSampleBuffer sample = soundAt(SoundBench::at(0), stereo48, blockFrames, steady(0.1));
    bench.input->append(sample);  // the first one of a process makes what is there once
    const AllocationCounter counter;
    for (int index = 0; index < 100; ++index) {
        bench.input->append(sample);
    }
    EXPECT_EQ(counter.count(), 0U);
    bench.finishAt(1);
}

TEST(FFmpegAssetWriterSoundTest, RefusesWhatItCannotWrite) {
    const auto writer = FFmpegMediaWriting().makeAssetWriter("/memory", AVFileType::appleM4A);
    EXPECT_FALSE(writer->canAdd(AVAssetWriterInput(smallVideo())));
    AVAudioSettings settings = stereoSound();
    settings.numberOfChannels = 9;
    EXPECT_FALSE(writer->canAdd(AVAssetWriterInput(settings)));
    settings.numberOfChannels.reset();
    EXPECT_TRUE(writer->canAdd(AVAssetWriterInput(settings)));
    writer->add(std::make_shared<AVAssetWriterInput>(settings));
    EXPECT_FALSE(writer->canAdd(AVAssetWriterInput(settings)));
}

}  // namespace
}  // namespace zorvane::testing
