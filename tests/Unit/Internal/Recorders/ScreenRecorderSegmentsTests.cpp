#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/Support/ScreenRecording.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {
namespace {

using ::testing::HasSubstr;

/// A recording into segments; the first writer has the sound, the second one the pictures.
class ScreenRecorderSegmentsTest : public testing::ScreenRecordingTest {
  protected:
    void record(bool captureAudio) {
        const OutputDescription::MultipleStreams output{
            .directoryURL = directory.path(), .filenamePrefix = "screen", .segmentCallback = [](const auto&) {}};
        makeRecorder({.captureAudio = captureAudio, .output = {output}});
        prepare();
        advance(0.5);
        start();
        startedAt = hostSeconds(secondsNow());
    }
    VirtualMovie sounds() const { return writing->writers().at(0)->movie(); }
    VirtualMovie pictures() const { return writing->writers().at(1)->movie(); }
    std::string master() const {
        std::ifstream file(directory.path() / "screen.m3u8");
        return {std::istreambuf_iterator<char>(file), {}};
    }

    TemporaryDirectory directory;
    double startedAt = 0;
};

TEST_F(ScreenRecorderSegmentsTest, BothStreamsSpanTheRecordingOnTheirOwnTimeLines) {
    record(true);
    advance(7.25);
    EXPECT_TRUE(stop().empty()) << "segments are told one by one, and not listed";

    EXPECT_NEAR(sounds().sessionStart->seconds(), startedAt, 1e-6);
    EXPECT_NEAR(sounds().sessionEnd->seconds(), startedAt + 7.25, 1e-6);
    EXPECT_EQ(pictures().sessionStart, kCMTimeZero);
    EXPECT_NEAR(pictures().sessionEnd->seconds(), 7.25, 1e-6);
    EXPECT_EQ(pictures().tracks.at(0).samples.front().presentationTimeStamp, kCMTimeZero);
    EXPECT_NEAR(pictures().tracks.at(0).samples.back().presentationTimeStamp.seconds(), 7.25, 1e-6);
    EXPECT_THAT(master(), HasSubstr("NAME=\"System Audio\",DEFAULT=YES,AUTOSELECT=YES,CHANNELS=\"2\""));
    EXPECT_THAT(master(), HasSubstr("CODECS=\"avc1.42e00a,mp4a.40.2\""));
    EXPECT_THAT(master(), HasSubstr("RESOLUTION=320x200"));
}

TEST_F(ScreenRecorderSegmentsTest, WithoutSoundThereIsNoStreamOfSound) {
    record(false);
    advance(1);
    EXPECT_TRUE(stop().empty());
    EXPECT_EQ(sounds().sessionStart, std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(directory.path() / "screen-audio.m3u8"));
    EXPECT_THAT(master(), ::testing::Not(HasSubstr("AUDIO")));
    EXPECT_TRUE(signals().empty());
}

TEST_F(ScreenRecorderSegmentsTest, SoundOfUnknownChannelsCountsAsMono) {
    writing->setConditions({.audioChannels = std::nullopt});
    record(true);
    advance(1);
    stop();
    EXPECT_THAT(master(), HasSubstr("CHANNELS=\"1\""));
}

}  // namespace
}  // namespace zorvane
