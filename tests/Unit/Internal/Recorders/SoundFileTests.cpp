// Sound files as a player hears them: recorders on a scripted desktop, through the real writer.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "Zorvane/Platform/FFmpeg/FFmpegMediaWriting.hpp"
#include "Zorvane/ZVMediaInfo.hpp"
#include "tests/Support/MovieReader.hpp"
#include "tests/Support/SoundRecording.hpp"

namespace zorvane {
namespace {

using Item = ZVSchemaItem;

class SoundFileTest : public testing::SoundRecordingTest {
  protected:
    SoundFileTest() { Platform::install(makeVirtualPlatform(desktop, std::make_shared<FFmpegMediaWriting>())); }

    static testing::RecordedSound soundOf(const std::filesystem::path& file, double begin) {
        const testing::MovieSound decoded = testing::readSound(file);
        testing::RecordedSound sound;
        sound.begin = begin;
        sound.sampleRate = decoded.sampleRate;
        for (std::int64_t frame = 0; frame < decoded.frameCount(); ++frame) {
            sound.frames.emplace_back(decoded.at(frame));
        }
        return sound;
    }

    static bool isQuickTimeMovie(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        const std::string content{std::istreambuf_iterator<char>(stream), {}};
        return content.substr(4, 8) == "ftypqt  ";
    }
};

TEST_F(SoundFileTest, AllFilesOfABundleHoldTheirSoundInItsPlaceAndAreEquallyLong) {
    plugMicrophone({AVAudioCommonFormat::int16, 44100, 6});
    desktop->now().playTone(tone);
    desktop->now().changeMicrophone("mic", [](VirtualMicrophone& microphone) {
        microphone.driftPPM = 150;
        microphone.jitter = std::chrono::milliseconds(3);
        microphone.latency = std::chrono::milliseconds(30);
    });
    const std::set<ZVSystemAudioExcludeOptions> everything;
    make({Item::microphone("mic", "mic.m4a"), Item::systemAudio(everything, "system.mp4"),
          Item::display(77, {.includeAudio = true}, "screen.m4v")});
    prepare();
    advance(0.3);
    start();
    const double startedAt = secondsNow();
    desktop->at(startedAt + 1).loseMicrophoneSound("mic", 0.5).loseSound(0.5);
    advance(3);
    const auto result = stop();
    const auto statistics = recorder->statistics();
    ASSERT_EQ(result.bundleInfo.files.size(), 3u);
    for (const auto& file : result.bundleInfo.files) {
        const std::filesystem::path path = result.bundleURL / file.filename;
        SCOPED_TRACE(path.filename());
        EXPECT_EQ(isQuickTimeMovie(path), path.extension() != ".mp4");
        const ZVMediaInfo info = ZVMediaInfo::read(path);
        for (const ZVMediaInfo::Track& track : info.tracks) {
            EXPECT_NEAR(track.begin.value_or(-1), 0, 0.001);
            EXPECT_NEAR(track.duration.value_or(-1), statistics.recordUntil - statistics.recordFrom, 0.001);
        }
        EXPECT_EQ(testing::readSound(path).channels, 2);
        const testing::RecordedSound sound = soundOf(path, startedAt);
        EXPECT_NEAR(sound.duration(), 3, 0.001);
        EXPECT_GT(sound.loudness(tone, 0, 0.9), 0.2) << "six channels in phase are louder when they are mixed";
        EXPECT_LT(sound.peak(1.1, 1.4), 0.01);
        EXPECT_NEAR(sound.delay(tone, 0, 0.9), 0, 0.001);
        EXPECT_NEAR(sound.delay(tone, 1.6, 2.97), 0, 0.001);
        EXPECT_GT(sound.peak(2.98, 3), 0.2) << "to the end";
    }
}

TEST_F(SoundFileTest, ASourceThatGivesNothingLeavesAFileOfSilenceAsLongAsTheRecording) {
    make({Item::microphone("mic", "mic.m4a")});
    prepare();
    desktop->now().changeMicrophone("mic", [](VirtualMicrophone& microphone) { microphone.isMute = true; });
    advance(0.5);
    start();
    advance(2);
    const auto result = stop();
    const testing::RecordedSound sound = soundOf(result.bundleURL / "mic.m4a", 0);
    EXPECT_NEAR(sound.duration(), 2, 0.001);
    EXPECT_EQ(sound.peak(0, 2), 0);
}

TEST_F(SoundFileTest, MinutesWithoutItsMicrophoneAreMinutesOfSilence) {
    make({Item::microphone("mic", "mic.m4a")});
    prepare();
    start();
    const double startedAt = secondsNow();
    desktop->at(startedAt + 1).loseMicrophoneSound("mic", 180);
    advance(182);
    const auto result = stop();
    const ZVMediaInfo info = ZVMediaInfo::read(result.bundleURL / "mic.m4a");
    EXPECT_NEAR(info.tracks.at(0).duration.value_or(0), 182, 0.001);
}

}  // namespace
}  // namespace zorvane
