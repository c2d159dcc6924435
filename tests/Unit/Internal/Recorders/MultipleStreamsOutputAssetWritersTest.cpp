#include "Zorvane/Internal/Recorders/MultipleStreamsOutputAssetWriters.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <set>
#include <stdexcept>
#include <thread>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Recorders/WriterSession.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Support/Timeline.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

namespace fs = std::filesystem;

using testing::at;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::sound;

/// Writers on a scripted platform, of which the segments lie in a real directory. The recording starts at 100 s.
class MultipleStreamsOutputAssetWritersTest : public testing::VirtualWorldTest {
  protected:
    static constexpr double start = 100;

    void make(MasterPlaylist playlist = {}, std::optional<DispatchQueue> queue = std::nullopt) {
        const OutputDescription::MultipleStreams output{.directoryURL = directory.path(),
                                                        .filenamePrefix = "talk",
                                                        .segmentCallback = [this](const fs::path& url) { note(url); }};
        writers = std::make_shared<MultipleStreamsOutputAssetWriters>(
            output, std::move(playlist), std::move(queue), log.logger<OutputAssetWriters>(),
            [this](const ZVRecordingNotice& notice) { notices.push_back(notice); });
    }
    void addAudio() {
        audio = std::make_shared<AVAssetWriterInput>(AVAudioSettings());
        writers->audioAssetWriter().add(audio);
    }
    void addVideo() {
        video = std::make_shared<AVAssetWriterInput>(AVVideoSettings{.width = 8, .height = 8});
        writers->videoAssetWriter().add(video);
    }
    void begin() {
        writers->startWriting();
        WriterSession(writers, "Test").startIfNeeded(at(start));
    }
    /// A sample of video at this time of the recording.
    void show(double seconds) {
        video->append(testing::picture(at(seconds)));
        Activity::waitUntilIdle();
    }
    /// A tenth of a second of sound at this time of the recording.
    void play(double seconds) {
        audio->append(sound(at(start + seconds), 4800));
        Activity::waitUntilIdle();
    }
    std::vector<fs::path> endAt(double seconds) {
        endSessions(*writers, StableRecordingInterval(testing::recording(start, start + seconds)));
        std::vector<fs::path> listed = clock->complete(writers->finishWriting());
        Activity::waitUntilIdle();
        return listed;
    }

    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(directory.path())) {
            names.insert(entry.path().filename());
        }
        return names;
    }
    std::string textOf(const std::string& name) const {
        std::ifstream file(directory.path() / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static Task<> finishAndTell(std::shared_ptr<OutputAssetWriters> writers, std::promise<void>* end) {
        co_await writers->finishWriting();
        end->set_value();
    }
    std::vector<std::string> told() const {
        MutexLock lock(mutex);
        return toldFiles;
    }

    TemporaryDirectory directory;
    LogCapture log;
    std::shared_ptr<MultipleStreamsOutputAssetWriters> writers;
    std::shared_ptr<AVAssetWriterInput> audio;
    std::shared_ptr<AVAssetWriterInput> video;
    std::optional<DispatchQueue> callbackQueue;  // on which a callback must run, if one was given
    std::vector<ZVRecordingNotice> notices;
    std::function<void()> inCallback;  // what else the host does in it

  private:
    void note(const fs::path& url) {
        EXPECT_TRUE(fs::exists(url)) << url;
        EXPECT_TRUE(!callbackQueue || callbackQueue->isCurrent());
        {
            MutexLock lock(mutex);
            toldFiles.push_back(url.filename());
        }
        if (inCallback) {
            inCallback();
        }
    }

    mutable Mutex mutex;
    std::vector<std::string> toldFiles;
};

TEST_F(MultipleStreamsOutputAssetWritersTest, EachStreamHasItsOwnNumbersAndTheHostHearsOfEachFile) {
    callbackQueue = DispatchQueue::serial("Host");
    make({.audioTrackName = "Voice"}, callbackQueue);
    addAudio();
    addVideo();
    begin();
    for (int second = 0; second < 13; ++second) {
        play(second);
        show(second);
    }
    EXPECT_TRUE(fs::exists(directory.path() / "talk.m3u8")) << "a player may begin while the recording goes on";
    EXPECT_EQ(textOf("talk-video.m3u8").find("#EXT-X-ENDLIST"), std::string::npos);
    EXPECT_THAT(endAt(13.5), IsEmpty());

    EXPECT_THAT(files(),
                ElementsAre("talk-audio-0000.mp4", "talk-audio-0001.m4s", "talk-audio-0002.m4s", "talk-audio-0003.m4s",
                            "talk-audio.m3u8", "talk-video-0000.mp4", "talk-video-0001.m4s", "talk-video-0002.m4s",
                            "talk-video-0003.m4s", "talk-video.m3u8", "talk.m3u8"));
    EXPECT_THAT(told(),
                ::testing::UnorderedElementsAre("talk-audio-0000.mp4", "talk-audio-0001.m4s", "talk-audio-0002.m4s",
                                                "talk-audio-0003.m4s", "talk-video-0000.mp4", "talk-video-0001.m4s",
                                                "talk-video-0002.m4s", "talk-video-0003.m4s"));
    for (const char* name : {"talk-audio.m3u8", "talk-video.m3u8"}) {
        EXPECT_TRUE(textOf(name).ends_with("0003.m4s\n#EXT-X-ENDLIST\n")) << textOf(name);
        EXPECT_NE(textOf(name).find("#EXTINF:1.500000,\n"), std::string::npos) << "the end is the recording's";
    }
    EXPECT_NE(textOf("talk.m3u8").find("NAME=\"Voice\""), std::string::npos);
    EXPECT_TRUE(log.has(ZVLogLevel::trace, "Writing segment data: talk-video-0000.mp4, segmentType:1"));
}

TEST_F(MultipleStreamsOutputAssetWritersTest, TheEndComesAfterTheLastCallbackHasReturned) {
    callbackQueue = DispatchQueue::serial("Host");
    make({}, callbackQueue);
    addVideo();
    begin();
    std::promise<void> end;
    const std::shared_future<void> ended = end.get_future().share();
    callbackQueue->async([ended] {
        EXPECT_EQ(ended.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout) << "this call goes on";
    });
    video->append(testing::picture(at(0)));
    endSessions(*writers, StableRecordingInterval(testing::recording(start, start + 1)));
    spawn(finishAndTell(writers, &end), Executor::pool());
    ended.wait();
    EXPECT_THAT(told(), ElementsAre("talk-video-0000.mp4", "talk-video-0001.m4s"));
}

TEST_F(MultipleStreamsOutputAssetWritersTest, WhoDestroysThemHearsOfNoSegmentAfterThat) {
    callbackQueue = DispatchQueue::serial("Host");
    make({}, callbackQueue);
    addVideo();
    begin();
    std::promise<void> end;
    const std::shared_future<void> gone = end.get_future().share();
    callbackQueue->async([gone] {
        EXPECT_EQ(gone.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout) << "this call goes on";
    });
    writers.reset();
    end.set_value();
    Activity::waitUntilIdle();
}

TEST_F(MultipleStreamsOutputAssetWritersTest, VideoTimesBeginAtZeroAndSoundIsOnTheHostClock) {
    make();
    EXPECT_TRUE(writers->expectsZeroBasedVideoPTS());
    addAudio();
    addVideo();
    begin();
    play(0);
    show(0);
    endAt(2.5);
    const VirtualMovie sounds = writing->writers().at(0)->movie();
    const VirtualMovie pictures = writing->writers().at(1)->movie();
    EXPECT_EQ(sounds.sessionStart, at(start));
    EXPECT_EQ(sounds.sessionEnd, at(start + 2.5));
    EXPECT_EQ(pictures.sessionStart, kCMTimeZero);
    EXPECT_EQ(pictures.sessionEnd, at(2.5));
}

TEST_F(MultipleStreamsOutputAssetWritersTest, AStreamWithoutAnInputDoesNotExist) {
    make({.audioChannelsCount = 1, .audioTrackName = "Microphone"});
    addAudio();
    begin();
    play(0);
    EXPECT_THAT(endAt(1), IsEmpty());
    EXPECT_THAT(files(), ElementsAre("talk-audio-0000.mp4", "talk-audio-0001.m4s", "talk-audio.m3u8", "talk.m3u8"));
    EXPECT_TRUE(textOf("talk.m3u8").ends_with("\ntalk-audio.m3u8\n"));
    EXPECT_EQ(writers->videoAssetWriter().status(), AVAssetWriter::Status::unknown);
    EXPECT_EQ(writers->videoAssetWriter().error(), nullptr);
}

TEST_F(MultipleStreamsOutputAssetWritersTest, ACallbackThatThrowsIsLoggedAndCalledAgain) {
    inCallback = [] { throw std::runtime_error("no network"); };
    make();
    addVideo();
    begin();
    show(0);
    endAt(7);
    EXPECT_THAT(told(), ElementsAre("talk-video-0000.mp4", "talk-video-0001.m4s", "talk-video-0002.m4s"));
    EXPECT_TRUE(log.has(ZVLogLevel::error, "The segment callback threw."));
}

TEST_F(MultipleStreamsOutputAssetWritersTest, CallbacksThatBlockHoldUpNoOtherJob) {
    std::promise<void> permission;
    const std::shared_future<void> permitted = permission.get_future().share();
    const unsigned more = std::max(4U, std::thread::hardware_concurrency()) + 1;  // than the pool has threads
    const auto writer = writing->makeSegmentWriter({});
    for (unsigned number = 0; number < more; ++number) {
        const SegmentedCoordinator::Parameters parameters{
            .directoryURL = directory.path(),
            .filenamePrefix = std::to_string(number),
            .targetDuration = 6,
            .segmentCallbackQueue = DispatchQueue::serial("Host"),
            .segmentCallback = [permitted](const fs::path&) { permitted.wait(); },
            .playlistHandler = nullptr,
            .onNotice = nullptr,
            .logger = log.logger<SegmentedCoordinator>()};
        SegmentedCoordinator(parameters)
            .didOutputSegmentData(*writer, std::vector<std::byte>(1), AVAssetSegmentType::initialization, std::nullopt);
    }
    std::promise<void> ran;
    DispatchQueue::serial("Other").async([&ran] { ran.set_value(); });
    EXPECT_EQ(ran.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
    permission.set_value();
    Activity::waitUntilIdle();
}

TEST_F(MultipleStreamsOutputAssetWritersTest, ASegmentThatCanNotBeWrittenIsLostAndNoOther) {
    make();
    addVideo();
    begin();
    show(0);
    show(6);
    const fs::path away = directory.path().native() + ".away";
    fs::rename(directory.path(), away);
    show(12);
    fs::rename(away, directory.path());
    show(18);
    endAt(20);
    EXPECT_THAT(files(), ElementsAre("talk-video-0000.mp4", "talk-video-0001.m4s", "talk-video-0003.m4s",
                                     "talk-video-0004.m4s", "talk-video.m3u8", "talk.m3u8"));
    EXPECT_THAT(told(), ElementsAre("talk-video-0000.mp4", "talk-video-0001.m4s", "talk-video-0003.m4s",
                                    "talk-video-0004.m4s"));
    EXPECT_NE(textOf("talk-video.m3u8").find("#EXT-X-GAP\n#EXTINF:6.000000,\ntalk-video-0002.m4s\n#EXTINF"),
              std::string::npos);
    ASSERT_EQ(notices.size(), 1U);
    EXPECT_EQ(notices[0].kind, ZVRecordingNotice::Kind::segmentLost);
    EXPECT_EQ(notices[0].source, "talk-video-0002.m4s");
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Error writing segment data: Unable to create \"" +
                                               (directory.path() / "talk-video-0002.m4s.new").native() +
                                               "\": No such file or directory."));
}

TEST_F(MultipleStreamsOutputAssetWritersTest, TheInitializationIsWrittenAsSoonAsItCanBe) {
    make();
    addVideo();
    begin();
    const fs::path away = directory.path().native() + ".away";
    fs::rename(directory.path(), away);
    show(0);
    show(6);
    fs::rename(away, directory.path());
    show(12);
    endAt(13);
    EXPECT_THAT(told(), ElementsAre("talk-video-0000.mp4", "talk-video-0002.m4s", "talk-video-0003.m4s"));
    EXPECT_NE(textOf("talk-video.m3u8").find("#EXT-X-GAP\n"), std::string::npos);
}

TEST_F(MultipleStreamsOutputAssetWritersTest, AStreamThatLacksItsInitializationToTheEndIsNotListed) {
    make();
    addVideo();
    begin();
    const fs::path away = directory.path().native() + ".away";
    fs::rename(directory.path(), away);
    show(0);
    show(6);
    endAt(7);
    fs::rename(away, directory.path());
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_THAT(told(), IsEmpty());
    ASSERT_EQ(notices.size(), 3U) << "two segments of media, and at the end the initialization";
    EXPECT_EQ(notices.back().source, "talk-video-0000.mp4");
}

TEST_F(MultipleStreamsOutputAssetWritersTest, AnErrorOfOneStreamIsThrownWhenBothHaveEnded) {
    writing->setConditions({.finishError = std::make_exception_ptr(NSError("Disk", 5))});
    make();
    addAudio();
    addVideo();
    begin();
    play(0);
    show(0);
    EXPECT_THROW(endAt(1), NSError);
    EXPECT_TRUE(textOf("talk-audio.m3u8").ends_with("#EXT-X-ENDLIST\n"));
    EXPECT_TRUE(textOf("talk-video.m3u8").ends_with("#EXT-X-ENDLIST\n"));
}

TEST_F(MultipleStreamsOutputAssetWritersTest, AWriterThatCanNotStartSaysWhy) {
    writing->setConditions({.startError = std::make_exception_ptr(NSError("Disk", 5))});
    make();
    addVideo();
    EXPECT_THROW(writers->startWriting(), NSError);
}

}  // namespace
}  // namespace zorvane
