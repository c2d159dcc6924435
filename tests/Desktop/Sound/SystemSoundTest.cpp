#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSound.hpp"
#include "tests/Desktop/Sound/SystemSoundFixture.hpp"
#include "tests/Support/PipeWireTestClient.hpp"
#include "tests/Support/PrivatePipeWire.hpp"
#include "tests/Support/WaitUntil.hpp"

namespace zorvane {
namespace {

using enum SCContentFilterKind;

class SystemSoundTest : public ::testing::Test {
  protected:
    SoundStream listen(const SCContentFilter& filter, const SCStreamConfiguration& configuration = {}) {
        SoundStream stream(*platform_.screenCapture, filter, configuration);
        EXPECT_EQ(stream.start(), nullptr);
        return stream;
    }

    const Platform platform_ = makeLinuxPlatform();
};

TEST_F(SystemSoundTest, WhatTheSystemPlaysIsHeardAndSilenceBeforeAndAfterWithoutABreak) {
    const SoundStream stream = listen(soundOf(excludingApplications));
    EXPECT_TRUE(stream.waitForSilence());
    auto one = play(low, oneProcess);
    const auto other = play(high, otherProcess);
    EXPECT_TRUE(stream.waitForTone(low));
    EXPECT_TRUE(stream.waitForTone(high, 1));
    one.reset();
    EXPECT_TRUE(stream.waitFor([](const HeardSound& recent) { return recent.recentLevel(low) < inaudible; }));
    EXPECT_TRUE(stream.waitForTone(high));
    EXPECT_TRUE(stream.heard().isContiguous());
}

TEST_F(SystemSoundTest, AChosenApplicationIsHeardAndNoOtherOne) {
    const auto one = play(low, oneProcess);
    const auto other = play(high, otherProcess);
    const SoundStream stream = listen(soundOf(includingApplications, {oneProcess}));
    EXPECT_TRUE(stream.waitForTone(low));
    EXPECT_TRUE(stream.waitSeconds(0.3));
    const HeardSound heard = stream.heard();
    EXPECT_LT(heard.level(high, heard.begin(), heard.end()), inaudible);
    EXPECT_NEAR(heard.recentLevel(low), loud, 0.01);
}

TEST_F(SystemSoundTest, WhenAChosenApplicationEndsThereIsSilenceAndNotTheSystemsSound) {
    auto one = play(low, oneProcess);
    const auto other = play(high, otherProcess);
    const SoundStream stream = listen(soundOf(includingApplications, {oneProcess}));
    ASSERT_TRUE(stream.waitForTone(low));
    one.reset();
    EXPECT_TRUE(stream.waitForSilence());
    EXPECT_TRUE(stream.waitSeconds(0.5));
    EXPECT_LT(stream.heard().level(high, stream.heard().begin(), stream.heard().end()), inaudible);

    one = play(low, oneProcess);
    EXPECT_TRUE(stream.waitForTone(low)) << "it plays again";
    EXPECT_TRUE(stream.heard().isContiguous());
}

TEST_F(SystemSoundTest, AFurtherStreamOfAChosenApplicationIsHeardToo) {
    const SoundStream stream = listen(soundOf(includingApplications, {oneProcess}));
    const auto first = play(low, oneProcess);
    EXPECT_TRUE(stream.waitForTone(low));
    const auto second = play(high, oneProcess);
    EXPECT_TRUE(stream.waitForTone(high));
    EXPECT_TRUE(stream.waitForTone(low));
}

TEST_F(SystemSoundTest, AnExcludedApplicationIsNotHeardAndAllOthersAre) {
    const auto excluded = play(low, oneProcess);
    const SoundStream stream = listen(soundOf(excludingApplications, {oneProcess}));
    const auto other = play(high, otherProcess);
    EXPECT_TRUE(stream.waitForTone(high));
    EXPECT_TRUE(stream.waitSeconds(0.3));
    EXPECT_LT(stream.heard().level(low, stream.heard().begin(), stream.heard().end()), inaudible);
}

TEST_F(SystemSoundTest, TheCurrentProcessIsLeftOutOnRequest) {
    const auto own = play(low, getpid());
    const auto other = play(high, otherProcess);
    const SoundStream all = listen(soundOf(excludingApplications));
    const SoundStream others = listen(soundOf(excludingApplications), {.excludesCurrentProcessAudio = true});
    EXPECT_TRUE(all.waitForTone(low));
    EXPECT_TRUE(others.waitForTone(high));
    EXPECT_LT(others.heard().level(low, others.heard().begin(), others.heard().end()), inaudible);
}

/// Further speakers, which can be made the default ones.
class SystemSoundSinkTest : public SystemSoundTest {
  protected:
    static constexpr const char* firstSink = "zorvane-test-speakers";
    static constexpr const char* secondSink = "second-speakers";

    ~SystemSoundSinkTest() override { makeDefault(firstSink); }

    std::uint32_t addSink(const char* position) {
        return client_.addNode(
            {{"media.class", "Audio/Sink"}, {"node.name", secondSink}, {"audio.position", position}});
    }
    void makeDefault(const std::string& name) {
        client_.setDefault("default.configured.audio.sink", "{ \"name\": \"" + name + "\" }");
    }

    PipeWireTestClient client_;
};

TEST_F(SystemSoundSinkTest, TheSystemsSoundIsThatOfTheDefaultSinkWhicheverThatIs) {
    const std::uint32_t second = addSink("FL,FR");
    const auto onFirst = play(low, oneProcess, {{"target.object", firstSink}, {"node.dont-reconnect", "true"}});
    const auto onSecond = play(high, otherProcess, {{"target.object", secondSink}, {"node.dont-reconnect", "true"}});
    const SoundStream stream = listen(soundOf(excludingApplications));
    ASSERT_TRUE(stream.waitForTone(low));
    EXPECT_LT(stream.heard().recentLevel(high), inaudible);
    makeDefault(secondSink);
    EXPECT_TRUE(stream.waitForTone(high));
    EXPECT_TRUE(stream.waitFor([](const HeardSound& recent) { return recent.recentLevel(low) < inaudible; }));
    client_.removeNode(second);
    EXPECT_TRUE(stream.waitForTone(low)) << "the default sink is gone, and another one has become it";
    EXPECT_TRUE(stream.heard().isContiguous());
}

TEST_F(SystemSoundSinkTest, TheCentreOfSurroundSpeakersIsHeardOnBothSides) {
    addSink("FL,FR,FC,LFE,SL,SR");
    makeDefault(secondSink);
    const auto voice =
        play(low, oneProcess, {{"target.object", secondSink}, {"stream.dont-remix", "true"}}, SPA_AUDIO_CHANNEL_FC);
    const SoundStream system = listen(soundOf(excludingApplications));
    const SoundStream application = listen(soundOf(includingApplications, {oneProcess}));
    for (const SoundStream* stream : {&system, &application}) {
        for (const std::uint32_t side : {0u, 1u}) {
            EXPECT_TRUE(
                stream->waitFor([](const HeardSound& recent) { return recent.recentLevel(low) > loud * 0.6; }, side));
        }
    }
}

TEST_F(SystemSoundTest, AnApplicationThatPlaysWithoutAWindowIsListedUntilItEnds) {
    auto player = play(low, oneProcess);
    const auto isListed = [&] {
        std::promise<SCShareableContent> promise;
        platform_.screenCapture->getShareableContent(SCShareableContentScope::all,
                                                     [&](SCShareableContent content, std::exception_ptr error) {
                                                         EXPECT_EQ(error, nullptr);
                                                         promise.set_value(std::move(content));
                                                     });
        const auto applications = promise.get_future().get().applications;
        const auto found = std::ranges::find(applications, oneProcess, &SCRunningApplication::processID);
        EXPECT_TRUE(found == applications.end() || found->applicationName == "Test Client") << found->applicationName;
        return found != applications.end();
    };
    EXPECT_TRUE(isListed());
    player.reset();
    waitUntil([&] { return !isListed(); });
}

class SystemSoundServiceTest : public ::testing::Test {
  protected:
    PrivatePipeWire service_;
    const Platform platform_ = makeLinuxPlatform();
    SoundStream stream_{*platform_.screenCapture, soundOf(excludingApplications)};
};

TEST_F(SystemSoundServiceTest, WithoutPipeWireNoSoundStarts) {
    const auto error = stream_.start();
    EXPECT_EQ(test::streamErrorCode(error), SCStreamErrorCode::failedToStart);
    EXPECT_EQ(test::streamErrorCode(stream_.stop()), SCStreamErrorCode::attemptToStopStreamState);
    EXPECT_TRUE(stream_.collector().samples().empty());
}

TEST_F(SystemSoundServiceTest, AStopEndsAStartAtWhateverMomentItComes) {
    service_.startAndWait();
    const auto session = std::make_shared<PipeWireSession>();
    for (int round = 0; round < 30; ++round) {
        std::atomic<bool> isStopped = false;
        const auto hear = [&](const CMSampleBuffer&) { EXPECT_FALSE(isStopped); };
        PipeWireSystemSound sound(session, platform_.audioConverting, {.audible = {}, .format = {}},
                                  {.sample = hear, .availability = [](const std::exception_ptr&) {}});
        test::CompletionResult started;
        std::thread starting([&] { sound.start(started.handler()); });
        if (round % 3 == 1) {
            std::this_thread::yield();
        } else if (round % 3 == 2) {
            starting.join();
        }
        sound.stop();
        isStopped = true;
        if (starting.joinable()) {
            starting.join();
        }
        started.wait();
    }
}

TEST_F(SystemSoundServiceTest, AServiceThatHangsFailsTheStart) {
    service_.startAndWait();
    service_.suspend();
    EXPECT_EQ(test::streamErrorCode(stream_.start()), SCStreamErrorCode::failedToStart);
    service_.resume();
}

TEST_F(SystemSoundServiceTest, TheEndOfPipeWireIsToldAndSoIsItsReturnWhileSilenceGoesOn) {
    service_.startAndWait();
    ASSERT_EQ(stream_.start(), nullptr);
    service_.kill();
    waitUntil([&] { return stream_.collector().absences().size() == 1; });
    EXPECT_NE(stream_.collector().absences().front(), nullptr);
    EXPECT_TRUE(stream_.waitSeconds(0.3));
    service_.start();
    waitUntil([&] { return stream_.collector().absences().size() == 2; });
    EXPECT_EQ(stream_.collector().absences().back(), nullptr);
    EXPECT_TRUE(stream_.waitSeconds(0.3));
    EXPECT_TRUE(stream_.heard().isContiguous());
    EXPECT_EQ(stream_.stop(), nullptr);
    EXPECT_TRUE(stream_.collector().stops().empty());
}

}  // namespace
}  // namespace zorvane
