#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "Zorvane/Platform/Foundation/NSProcessInfo.hpp"
#include "tests/Support/SoundRecording.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using Item = ZVSchemaItem;
using Exclude = ZVSystemAudioExcludeOptions;

constexpr double oneMillisecond = 0.001;

/// A desktop on which a player sounds at 100 Hz, a game at 250 Hz, and this process at 350 Hz.
class SystemAudioRecordingTest : public testing::SoundRecordingTest {
  protected:
    static constexpr std::int32_t player = 41;
    static constexpr std::int32_t game = 42;

    SystemAudioRecordingTest() {
        desktop->now().setApplications({{player, "test.player", "Player"}, {game, "test.game", "Game"}});
        desktop->now().playTone(player, tone).playTone(game, 250).playTone(processIdentifier(), 350);
    }

    /// Whose tones are in a recording, by their pitch.
    std::vector<int> heard(const std::vector<ZVSchemaItem>& items) {
        record(items, 0.5);
        std::vector<int> tones;
        for (const int pitch : {100, 250, 350}) {
            if (sound(writing->writers().size() - 1).loudness(pitch, 0, 0.5) > VirtualSound::amplitude / 2) {
                tones.push_back(pitch);
            }
        }
        return tones;
    }
};

TEST_F(SystemAudioRecordingTest, AFileHoldsTheSoundOfThoseItWasAskedFor) {
    const std::vector<std::int32_t> chosen{player, 999};
    EXPECT_THAT(heard({Item::systemAudio()}), ElementsAre(100, 250, 350));
    EXPECT_THAT(heard({Item::systemAudio({Exclude::processID(game)})}), ElementsAre(100, 350));
    EXPECT_THAT(heard({Item::systemAudio({Exclude::currentProcess()})}), ElementsAre(100, 250));
    EXPECT_THAT(heard({Item::systemAudio(chosen)}), ElementsAre(100));
    EXPECT_THAT(heard({Item::applicationAudio(game)}), ElementsAre(250));
    EXPECT_EQ(recorder->statistics().soundLevels.at(0).source, "Application Audio");
    EXPECT_EQ(recorder->statistics().soundLevels.at(0).name, "Game");
}

TEST_F(SystemAudioRecordingTest, AFileIsFullOfSoundInItsPlaceAndNoPictureIsTaken) {
    desktop->now().setStreamClock(5);
    const auto result = record({Item::applicationAudio(player)}, 1);
    const testing::RecordedSound sound = this->sound();
    EXPECT_NEAR(sound.duration(), 1, oneMillisecond);
    EXPECT_EQ(sound.missing(), 0);
    EXPECT_NEAR(sound.delay(tone, 0, 1), 0, 0.0001);
    ASSERT_EQ(movie().tracks.size(), 1u);
    EXPECT_EQ(movie().tracks[0].audioSettings->numberOfChannels, 2);
    ASSERT_EQ(result.bundleInfo.files.size(), 1u);
    EXPECT_EQ(result.bundleInfo.files[0].filename, "appaudio-41.m4a");
    EXPECT_EQ(result.bundleInfo.files[0].type, ZVBundleInfo::FileAssetType::systemAudio);
}

TEST_F(SystemAudioRecordingTest, WhatCanNotBeRecordedIsToldBeforeAnyStreamExists) {
    const std::vector<std::int32_t> gone{7, 8};
    EXPECT_EQ(failureToPrepare({Item::systemAudio(gone)}),
              "internalError: SystemAudio: None of the includedProcessIds can be found, cannot record audio 7, 8 | "
              "No application with a window or with sound is running as process 7, 8.");
    record({Item::systemAudio({ZVSystemAudioExcludeOptions::processID(9)})}, 0.1);
    EXPECT_TRUE(log.has(ZVLogLevel::warning, "No running application has this process id, it is passed over.",
                        {{"processIDs", "9"}}));
    writing->setConditions({.refusesAudioInput = true});
    EXPECT_EQ(failureToPrepare({Item::systemAudio()}), "internalError: Can't add input to asset writer. | ");
    desktop->now().loseSound(10);
    writing->setConditions({});
    EXPECT_EQ(failureToPrepare({Item::systemAudio()}),
              "internalError: No audio samples received from system audio. | "
              "No audio from system audio. If this problem persists, try rebooting your computer.");
    desktop->now().removeDisplay(1);
    EXPECT_EQ(failureToPrepare({Item::systemAudio()}), "internalError: No display available | ");
}

TEST_F(SystemAudioRecordingTest, AnInterruptionIsSilenceAndToldToTheHostAlsoBesideAPicture) {
    make({Item::applicationAudio(player), Item::display(77, {.includeAudio = true})});
    prepare();
    start();
    const double startedAt = secondsNow();
    desktop->at(startedAt + 1).interruptSound(std::make_exception_ptr(ZVError::internalError("No sound server.")));
    desktop->at(startedAt + 2).resumeSound();
    advance(3);
    stop();
    EXPECT_THAT(notices(), ::testing::UnorderedElementsAre("interrupted Player for a reason",
                                                           "interrupted System Audio for a reason", "resumed Player",
                                                           "resumed System Audio"));
    for (std::size_t writer = 0; writer < 2; ++writer) {
        const std::size_t track = movie(writer).tracks.size() - 1;
        EXPECT_EQ(sound(writer, track).missing(), 0);
        EXPECT_EQ(sound(writer, track).peak(1.03, 1.97), 0);
        EXPECT_NEAR(sound(writer, track).delay(tone, 2.05, 2.95), 0, 0.0001);
    }
}

TEST_F(SystemAudioRecordingTest, AStreamThatIsStoppedEndsTheRecordingCleanly) {
    using Kind = ZVRecorder::AbortReason::Kind;
    const std::pair<SCStreamErrorCode, Kind> rows[] = {{SCStreamErrorCode::userStopped, Kind::userStopped},
                                                       {SCStreamErrorCode::systemStoppedStream, Kind::interrupted}};
    for (const auto& [code, expected] : rows) {
        std::optional<Kind> aborted;
        make({Item::systemAudio()});
        clock->complete(
            recorder->setAbortHander([&](const ZVRecorder::AbortReason& reason) { aborted = reason.kind(); }));
        prepare();
        start();
        desktop->at(secondsNow() + 0.5).stopStreams(1, code);
        advance(1);
        EXPECT_EQ(aborted, expected);
        EXPECT_NEAR(sound(writing->writers().size() - 1).duration(), 0.5, oneMillisecond);
        EXPECT_TRUE(log.has(ZVLogLevel::info, "ScreenCaptureKit stream has already been stopped."));
    }
}

TEST_F(SystemAudioRecordingTest, SegmentsAreWrittenWithAPlaylist) {
    const auto result =
        record({Item::systemAudio(std::set<Exclude>(), ZVAudioOutputOptions::segmented({.filenamePrefix = "all"})),
                Item::microphone("mic", ZVAudioOutputOptions::segmented({.filenamePrefix = "me"}))},
               1);
    EXPECT_TRUE(result.bundleInfo.files.empty());
    for (const char* name : {"all.m3u8", "all-audio-0000.mp4", "all-audio-0001.m4s", "me.m3u8", "me-audio-0001.m4s"}) {
        EXPECT_TRUE(std::filesystem::exists(result.bundleURL / name)) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(result.bundleURL / "me-video-0000.mp4"));
}

}  // namespace
}  // namespace zorvane
