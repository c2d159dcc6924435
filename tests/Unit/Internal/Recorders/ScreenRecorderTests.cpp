#include "Zorvane/Internal/Recorders/ScreenRecorder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Support/ScreenRecording.hpp"

namespace zorvane {
namespace {

using ::testing::Pointwise;

class ScreenRecorderTest : public testing::ScreenRecordingTest {};

MATCHER_P(NearTimes, tolerance, "") {
    return std::abs(std::get<0>(arg) - std::get<1>(arg)) <= tolerance;
}

TEST_F(ScreenRecorderTest, AMovieBeginsAtTheStartAndEndsAtTheStop) {
    makeRecorder();
    prepare();
    advance(0.5);
    start();
    const double startedAt = secondsNow();
    desktop->at(startedAt + 0.25).paint(1, VirtualColor::white());
    advance(0.7);
    const auto assets = stop();
    EXPECT_THAT(sampleTimes(), Pointwise(NearTimes(1e-6), {0.0, 0.25, 0.7}));
    const VirtualMovie written = movie();
    EXPECT_NEAR(written.sessionStart->seconds(), hostSeconds(startedAt), 1e-6);
    EXPECT_NEAR(written.sessionEnd->seconds(), hostSeconds(startedAt + 0.7), 1e-6);
    EXPECT_TRUE(written.tracks.at(0).isFinished);
    ASSERT_EQ(assets.size(), 1u);
    EXPECT_EQ(assets[0].type, ZVBundleInfo::FileAssetType::screen);
    EXPECT_EQ(assets[0].filename, "display-77.mov");
    EXPECT_FALSE(assets[0].related.has_value());
}

TEST_F(ScreenRecorderTest, TheOpeningPictureIsTheOneThatWasOnScreenAtTheStart) {
    desktop->now().showFrame(1, 41);
    makeRecorder();
    prepare();
    desktop->at(secondsNow() + 0.2).showFrame(1, 42);
    advance(0.4);
    start();
    advance(0.3);
    stop();
    const VirtualMovie written = movie();
    ASSERT_EQ(written.tracks.at(0).samples.size(), 2u);
    EXPECT_EQ(written.tracks[0].samples[0].frameNumber, 42u);
    EXPECT_EQ(written.tracks[0].samples[1].frameNumber, 42u) << "and is still there at the stop";
}

TEST_F(ScreenRecorderTest, AStillScreenIsRepeatedEachSecond) {
    makeRecorder();
    prepare();
    start();
    advance(3.5);
    const RecorderStatistics statistics = recorder->statistics();
    stop();
    EXPECT_EQ(statistics.framesRepeated, 3u);
    const std::vector<double> times = sampleTimes();
    ASSERT_EQ(times.size(), 5u) << "the opening, three repeats, the closing";
    EXPECT_NEAR(times.back(), 3.5, 1e-6);
    for (std::size_t index = 2; index < times.size() - 1; ++index) {
        EXPECT_NEAR(times[index] - times[index - 1], 1.0, 0.11);
    }
    EXPECT_EQ(recorder->statistics().framesWritten, 4u) << "the closing picture isn't shown";
}

TEST_F(ScreenRecorderTest, OnlyCompletePicturesCount) {
    makeRecorder();
    prepare();
    start();
    for (const VirtualOddSample kind : {VirtualOddSample::idle, VirtualOddSample::blank,
                                        VirtualOddSample::withoutStatus, VirtualOddSample::invalid}) {
        desktop->now().deliver(1, kind);
        advance(0.02);
    }
    stop();
    EXPECT_EQ(sampleTimes().size(), 2u);
    EXPECT_TRUE(signals().empty());
}

TEST_F(ScreenRecorderTest, ASampleOfUnknownTypeIsToldOnceAndDropped) {
    makeRecorder();
    prepare();
    start();
    for (int count = 0; count < 3; ++count) {
        desktop->now().deliver(1, VirtualOddSample::unknownType);
        advance(0.02);
    }
    stop();
    EXPECT_EQ(log.count(ZVLogLevel::warning, "Got data of unknown type, ignoring."), 1u);
    EXPECT_EQ(sampleTimes().size(), 2u);
}

TEST_F(ScreenRecorderTest, BackwardTimesAreMovedOnAndNotLost) {
    makeRecorder();
    prepare();
    start();
    desktop->at(secondsNow() + 0.1).showFrame(1, 1);
    advance(0.2);
    desktop->now().deliver(1, VirtualOddSample::repeatedTime).deliver(1, VirtualOddSample::backwardTime);
    advance(0.1);
    stop();
    EXPECT_THAT(sampleTimes(), Pointwise(NearTimes(1e-3), {0.0, 0.1, 0.1, 0.1, 0.3}));
    EXPECT_TRUE(signals().empty());
}

TEST_F(ScreenRecorderTest, WithoutAStreamClockTheTimeOfArrivalCounts) {
    desktop->now().setStreamClock(std::nullopt);
    makeRecorder();
    prepare();
    start();
    desktop->at(secondsNow() + 0.25).paint(1, VirtualColor::white());
    advance(0.5);
    stop();
    EXPECT_THAT(sampleTimes(), Pointwise(NearTimes(1e-3), {0.0, 0.25, 0.5}));
}

TEST_F(ScreenRecorderTest, ADropInTheWriterLosesThePictureAndCountsIt) {
    VirtualWritingConditions conditions;
    conditions.refusesMedia = VirtualSpan{0.2, 0.4};
    writing->setConditions(conditions);
    makeRecorder();
    prepare();
    start();
    desktop->at(0.1).paint(1, VirtualColor::white());
    desktop->at(0.3).paint(1, VirtualColor::black());
    desktop->at(0.5).paint(1, VirtualColor::white());
    advance(0.6);
    stop();
    EXPECT_EQ(recorder->statistics().framesDropped, 1u);
    EXPECT_EQ(recorder->statistics().framesWritten, 3u) << "the opening picture and those at 0.1 and 0.5";
}

TEST_F(ScreenRecorderTest, TwoRecordersOfOneDisplayWriteTheSamePictures) {
    makeRecorder();
    const auto other = recorder;
    makeRecorder();
    clock->complete(other->prepare());
    prepare();
    start();
    const double startedAt = secondsNow();
    desktop->at(startedAt + 0.25).paint(1, VirtualColor::white());
    advance(0.5);
    stop();
    clock->complete(other->finish());
    for (const auto& writer : writing->writers()) {
        const auto samples = writer->movie().tracks.at(0).samples;
        ASSERT_EQ(samples.size(), 3u);
        EXPECT_NEAR(samples[0].presentationTimeStamp.seconds(), hostSeconds(startedAt), 1e-6);
        EXPECT_NEAR(samples[1].presentationTimeStamp.seconds(), hostSeconds(startedAt + 0.25), 1e-6);
        EXPECT_NEAR(samples[2].presentationTimeStamp.seconds(), hostSeconds(startedAt + 0.5), 1e-6);
    }
    EXPECT_EQ(writing->writers().size(), 2u);
}

TEST_F(ScreenRecorderTest, ConfiguresStreamAndWriterByMode) {
    makeRecorder({.cropRect = CGRect::make(1, 1, 33.5, 21.5), .mode = RecordMode::displayP3});
    prepare();
    start();
    advance(0.1);
    stop();
    const AVVideoSettings settings = movie().tracks.at(0).videoSettings.value();
    EXPECT_EQ(settings.codec, CMVideoCodecType::hevc);
    EXPECT_EQ(settings.width, 33);
    EXPECT_EQ(settings.height, 21);
    EXPECT_EQ(settings.colorProperties->primaries, AVVideoColorPrimaries::p3D65);
    EXPECT_FALSE(settings.compressionProperties.allowFrameReordering);
    EXPECT_TRUE(movie().tracks[0].expectsMediaDataInRealTime);
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Configured SCStream.", {{"captureAudio", "false"}}));
}

TEST_F(ScreenRecorderTest, SoundHeldBeforeTheStartIsReplayedAndNothingGetsLost) {
    desktop->now().playTone(440);
    makeRecorder({.captureAudio = true});
    prepare();
    advance(0.3);
    start();
    const double startedAt = secondsNow();
    advance(1.0);
    stop();
    const VirtualMovie written = movie();
    ASSERT_EQ(written.tracks.size(), 2u);
    EXPECT_NEAR(written.sessionStart->seconds(), hostSeconds(startedAt), 1e-4);
    const auto& sound = written.tracks[1].samples;
    EXPECT_LE(sound.front().presentationTimeStamp.seconds(), hostSeconds(startedAt));
    for (std::size_t index = 1; index < sound.size(); ++index) {
        const CMTime expected = sound[index - 1].presentationTimeStamp + sound[index - 1].duration;
        EXPECT_NEAR((sound[index].presentationTimeStamp - expected).seconds(), 0, 1e-6);
    }
    EXPECT_GE((sound.back().presentationTimeStamp + sound.back().duration).seconds(), hostSeconds(startedAt + 0.97));
}

TEST_F(ScreenRecorderTest, ALossOfSoundIsFilledWithSilenceInItsPlace) {
    desktop->now().playTone(440);
    makeRecorder({.captureAudio = true});
    prepare();
    start();
    desktop->at(secondsNow() + 0.3).loseSound(0.2);
    advance(1.0);
    stop();
    constexpr double oneSample = 1.0001 / 48000;  // silence is made of whole samples
    const auto sound = movie().tracks.at(1).samples;
    for (std::size_t index = 1; index < sound.size(); ++index) {
        const CMTime expected = sound[index - 1].presentationTimeStamp + sound[index - 1].duration;
        EXPECT_NEAR((sound[index].presentationTimeStamp - expected).seconds(), 0, oneSample);
    }
    EXPECT_EQ(log.count(ZVLogLevel::info, "Detected gap in audio."), 1u);
}

TEST_F(ScreenRecorderTest, SoundThatAWriterRefusesAtTheEndIsWaitedFor) {
    desktop->now().playTone(440);
    VirtualWritingConditions conditions;
    conditions.refusesMedia = VirtualSpan{0.5, 2.2};
    writing->setConditions(conditions);
    makeRecorder({.captureAudio = true});
    prepare();
    start();
    advance(1.0);
    const double stoppedAt = secondsNow();
    stop();
    const auto sound = movie().tracks.at(1).samples;
    EXPECT_GE((sound.back().presentationTimeStamp + sound.back().duration).seconds(), hostSeconds(stoppedAt - 0.03));
    EXPECT_TRUE(log.has(ZVLogLevel::info, "Couldn't flush all frames in buffer at once, retrying a bit."));
}

}  // namespace
}  // namespace zorvane
