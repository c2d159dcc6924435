#include <unistd.h>

#include <memory>
#include <optional>

#include "tests/Desktop/Sound/SystemSoundFixture.hpp"
#include "tests/Support/PipeWireTestClient.hpp"

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

}  // namespace
}  // namespace zorvane
