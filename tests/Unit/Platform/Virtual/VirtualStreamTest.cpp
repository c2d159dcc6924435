#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <mutex>
#include <numbers>
#include <string>

#include "Zorvane/Platform/AVFoundation/CaptureAccess.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Virtual/ManualClock.hpp"
#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"
#include "Zorvane/Platform/Virtual/VirtualPlatform.hpp"
#include "tests/Support/SampleCollector.hpp"

namespace zorvane {
namespace {

using test::CollectedSample;

/// A desktop of 320 by 240 on a manual clock, and a stream of its display with sound.
class VirtualStreamTest : public ::testing::Test {
  protected:
    void advance(double seconds) { clock_->advance(std::chrono::nanoseconds(std::llround(seconds * 1e9))); }

    std::exception_ptr startStream(SCStreamConfiguration configuration = {.width = 320, .height = 240}) {
        configuration.capturesAudio = true;
        stream_ = platform_.screenCapture->makeStream({.display = {.displayID = 1}}, configuration, collector_);
        stream_->addStreamOutput(collector_, SCStreamOutputType::screen, DispatchQueue::serial("Screen"));
        stream_->addStreamOutput(collector_, SCStreamOutputType::audio, DispatchQueue::serial("Audio"));
        test::CompletionResult started;
        stream_->startCapture(started.handler());
        return started.wait();
    }

    /// Seconds since the desktop was made.
    double time(const CMTime& stamp) const {
        return (stamp - CMTime::make(desktop_->origin().count(), 1'000'000'000)).seconds();
    }

    std::vector<CollectedSample> screenSamples() const {
        std::vector<CollectedSample> samples = collector_->samples();
        std::erase_if(samples, [](const CollectedSample& sample) { return sample.type == SCStreamOutputType::audio; });
        return samples;
    }
    std::vector<CollectedSample> sounds() const {
        std::vector<CollectedSample> samples = collector_->samples();
        std::erase_if(samples, [](const CollectedSample& sample) { return sample.type != SCStreamOutputType::audio; });
        return samples;
    }

    const std::shared_ptr<ManualClock> clock_ = std::make_shared<ManualClock>();
    const std::shared_ptr<VirtualDesktop> desktop_ =
        VirtualDesktop::make(clock_, {{.frame = CGRect::make(0, 0, 320, 240)}});
    const Platform platform_ = makeVirtualPlatform(desktop_);
    const std::shared_ptr<test::SampleCollector> collector_ = std::make_shared<test::SampleCollector>();
    std::shared_ptr<SCStream> stream_;
};

TEST_F(VirtualStreamTest, EveryScriptedFrameIsShownAtItsTime) {
    desktop_->at(0.5).animate(1, {.framesPerSecond = 30, .framesPerPhase = 3, .rest = 1, .frames = 5});
    ASSERT_EQ(startStream(), nullptr);
    advance(3);
    const auto pictures = collector_->pictures();
    const double expected[] = {0, 0.5, 0.5 + 1 / 30.0, 0.5 + 2 / 30.0, 1.6, 1.6 + 1 / 30.0};
    ASSERT_EQ(pictures.size(), std::size(expected));
    for (std::size_t index = 0; index < pictures.size(); ++index) {
        EXPECT_NEAR(time(pictures[index].stamp), expected[index], 1e-9);
        const auto number = index == 0 ? std::nullopt : std::optional<std::uint32_t>(index - 1);
        EXPECT_EQ(pictures[index].frameNumber, number);
    }
}

TEST_F(VirtualStreamTest, AScriptEventInThePresentHappensInsideTheCall) {
    desktop_->at(0).allowScreenCapture(false).failDisplayList(CGError::failure);
    EXPECT_FALSE(platform_.captureAccess->request(ZVPermission::screenRecording));
    EXPECT_THROW(platform_.displays->activeDisplayList(), CGErrorDescription);
    EXPECT_EQ(test::streamErrorCode(startStream()), SCStreamErrorCode::userDeclined);
    desktop_->now().failDisplayList(CGError::success);
    EXPECT_EQ(platform_.displays->activeDisplayList(), std::vector<CGDirectDisplayID>{1});
}

TEST_F(VirtualStreamTest, OddSamplesComeAsTheyAreBooked) {
    desktop_->at(1).showFrame(1, 5);
    desktop_->at(2).deliver(1, VirtualOddSample::idle).deliver(1, VirtualOddSample::blank);
    desktop_->at(3).deliver(1, VirtualOddSample::withoutStatus).deliver(1, VirtualOddSample::invalid);
    desktop_->at(4).deliver(1, VirtualOddSample::repeatedTime).deliver(1, VirtualOddSample::backwardTime);
    desktop_->at(5).deliver(1, VirtualOddSample::unknownType);
    ASSERT_EQ(startStream(), nullptr);
    advance(6);
    const auto samples = screenSamples();
    ASSERT_EQ(samples.size(), 11u) << "two pictures with their idle notices, and seven odd samples";
    EXPECT_EQ(samples[4].status, SCFrameStatus::idle);
    EXPECT_EQ(samples[5].status, SCFrameStatus::blank);
    EXPECT_EQ(samples[6].status, std::nullopt);
    EXPECT_TRUE(samples[6].layout);
    EXPECT_FALSE(samples[7].isValid);
    EXPECT_NEAR(time(samples[8].stamp), 1, 1e-9);
    EXPECT_LT(samples[9].stamp, samples[8].stamp);
    EXPECT_EQ(samples[9].frameNumber, 5u);
    EXPECT_NE(samples[10].type, SCStreamOutputType::screen);
}

TEST_F(VirtualStreamTest, HeldPicturesComeWhenTheHoldEndsAndShowTheLastChange) {
    desktop_->at(0).holdPictures(1, 4);
    desktop_->at(1).showFrame(1, 1);
    desktop_->at(2).showFrame(1, 2);
    ASSERT_EQ(startStream(), nullptr);
    advance(3.9);
    EXPECT_TRUE(screenSamples().empty());
    advance(0.2);
    ASSERT_EQ(collector_->pictures().size(), 1u);
    EXPECT_NEAR(time(collector_->pictures()[0].stamp), 4, 1e-9);
    EXPECT_EQ(collector_->pictures()[0].frameNumber, 2u);
}

TEST_F(VirtualStreamTest, AStreamStoppedByTheDesktopTellsItsDelegateOnceAndFallsSilent) {
    desktop_->at(1.01).stopStreams(1, SCStreamErrorCode::userStopped).showFrame(1, 1);
    desktop_->at(2).removeDisplay(1);
    ASSERT_EQ(startStream(), nullptr);
    advance(3);
    ASSERT_EQ(collector_->stops().size(), 1u);
    EXPECT_EQ(test::streamErrorCode(collector_->stops()[0]), SCStreamErrorCode::userStopped);
    EXPECT_EQ(collector_->pictures().size(), 1u);
    EXPECT_EQ(sounds().size(), 50u) << "one second of blocks";
    test::CompletionResult stopped;
    stream_->stopCapture(stopped.handler());
    EXPECT_EQ(test::streamErrorCode(stopped.wait()), SCStreamErrorCode::attemptToStopStreamState);
}

TEST_F(VirtualStreamTest, AnUnpluggedDisplayStopsItsStreamsAndIsListedNoMore) {
    desktop_->at(1).removeDisplay(1);
    ASSERT_EQ(startStream(), nullptr);
    advance(2);
    ASSERT_EQ(collector_->stops().size(), 1u);
    EXPECT_EQ(test::streamErrorCode(collector_->stops()[0]), SCStreamErrorCode::noCaptureSource);
    EXPECT_TRUE(platform_.displays->activeDisplayList().empty());
    EXPECT_EQ(platform_.displays->properties(1), std::nullopt);
}

TEST_F(VirtualStreamTest, AStreamOutlivesAChangeOfItsDisplaysMode) {
    desktop_->at(1).putDisplay({.frame = CGRect::make(0, 0, 640, 480), .scale = std::nullopt}).paint(1, {0, 1, 0});
    ASSERT_EQ(startStream(), nullptr);
    advance(2);
    EXPECT_EQ(collector_->pictures().back().center, VirtualColor({0, 1, 0}).pixel(CVPixelFormat::bgra));
    EXPECT_EQ(collector_->pictures().back().layout->width, 320);
    EXPECT_EQ(platform_.displays->displayMode(1), std::nullopt);
}

TEST_F(VirtualStreamTest, StampsAreOnTheStreamsClockIfItHasOne) {
    desktop_->at(0).setStreamClock(100.0);
    ASSERT_EQ(startStream(), nullptr);
    advance(0.1);
    EXPECT_NEAR(time(collector_->pictures()[0].stamp), -100, 1e-9);
    EXPECT_NEAR(time(stream_->synchronizationClock()->convertToHostTime(sounds()[0].stamp)), 0, 1e-9);

    desktop_->now().setStreamClock(std::nullopt);
    ASSERT_EQ(startStream(), nullptr);
    advance(0.1);
    EXPECT_EQ(stream_->synchronizationClock(), nullptr);
    EXPECT_EQ(collector_->pictures().back().stamp, kCMTimeZero);
}

TEST_F(VirtualStreamTest, WideColorIsDeliveredWhereTheDisplayHasIt) {
    const SCStreamConfiguration wide{.width = 320, .height = 240, .pixelFormat = CVPixelFormat::l10r};
    ASSERT_EQ(startStream(wide), nullptr);
    advance(0.1);
    EXPECT_EQ(collector_->pictures().back().layout->format, CVPixelFormat::bgra)
        << "an 8-bit display gives what it has";

    const VirtualColor p3Green{0, 1, 0, CGColorSpaceName::displayP3};
    desktop_->now()
        .putDisplay({.frame = CGRect::make(0, 0, 320, 240), .gamut = VirtualScreen::Gamut::wide})
        .paint(1, p3Green);
    ASSERT_EQ(startStream(wide), nullptr);
    advance(0.1);
    EXPECT_EQ(collector_->pictures().back().layout->format, CVPixelFormat::l10r);
    EXPECT_EQ(collector_->pictures().back().layout->colorSpace, CGColorSpaceName::displayP3);
    EXPECT_EQ(collector_->pictures().back().center, 0x3FFu << 10);
}

TEST_F(VirtualStreamTest, SoundJoinsExactlyUnlessTheScriptLosesOrShiftsIt) {
    desktop_->at(0).playTone(440);
    desktop_->at(1).loseSound(0.1);
    desktop_->at(2).shiftSound(-0.005);
    desktop_->at(3).shiftSound(0.105);
    ASSERT_EQ(startStream(), nullptr);
    advance(4);
    const auto blocks = sounds();
    ASSERT_EQ(blocks.size(), 195u);
    for (std::size_t index = 1; index < blocks.size(); ++index) {
        const double step = time(blocks[index].stamp) - time(blocks[index - 1].stamp);
        const double expected = index == 50 ? 0.12 : index == 95 ? 0.015 : index == 145 ? 0.125 : 0.02;
        EXPECT_NEAR(step, expected, 1e-9) << index;
    }
    float after = 0;  // the tone goes on in its place behind the loss
    std::memcpy(&after, blocks[50].sound->bytes().data() + 12 * VirtualSound::format.bytesPerFrame(), sizeof(after));
    EXPECT_NEAR(after, VirtualSound::amplitude * std::sin(2 * std::numbers::pi * 440 * (1.1 + 12 / 48000.0)), 1e-6);
}

TEST_F(VirtualStreamTest, AStreamThatCouldNotDrawDoesNotStart) {
    const SCStreamConfiguration unusable[] = {
        {.height = 240},
        {.queueDepth = 0, .width = 320, .height = 240},
        {.sourceRect = CGRect::make(0, 0, 10, 0), .width = 320, .height = 240},
        {.width = 320, .height = 240, .minimumFrameInterval = kCMTimeInvalid},
    };
    for (const SCStreamConfiguration& configuration : unusable) {
        EXPECT_EQ(test::streamErrorCode(startStream(configuration)), SCStreamErrorCode::failedToStart)
            << configuration.debugDescription();
    }
}

TEST_F(VirtualStreamTest, OutputsThatTheStreamCannotServeAreRefused) {
    const auto silent = platform_.screenCapture->makeStream({.display = {.displayID = 1}}, {}, collector_);
    EXPECT_THROW(silent->addStreamOutput(collector_, SCStreamOutputType::audio, DispatchQueue::serial("Audio")),
                 NSError);
    desktop_->now().refuseStreamOutput(SCStreamOutputType::screen);
    EXPECT_THROW(silent->addStreamOutput(collector_, SCStreamOutputType::screen, DispatchQueue::serial("S")), NSError);
}

TEST_F(VirtualStreamTest, ContentRequestsAreAnsweredLateNeverOrWithAnErrorAsBooked) {
    const auto failure = std::make_exception_ptr(NSError("Test", 1));
    desktop_->at(0).answerContentRequests(
        {VirtualAnswer::never(), VirtualAnswer::after(2), VirtualAnswer::failing(failure)});
    std::mutex mutex;
    std::vector<std::string> answers;
    for (int request = 0; request < 4; ++request) {
        platform_.screenCapture->getShareableContent(
            SCShareableContentScope::all, [&, request](const SCShareableContent& content, std::exception_ptr error) {
                const std::lock_guard lock(mutex);
                answers.push_back(std::to_string(request) +
                                  (error ? "error" : std::to_string(content.displays.size())));
            });
        advance(0.1);
    }
    desktop_->at(1).putDisplay({.displayID = 2});
    advance(10);
    EXPECT_EQ(answers, (std::vector<std::string>{"2error", "31", "12"})) << "content is that of the time of the answer";
    EXPECT_EQ(desktop_->withState([](const VirtualDesktopState& state) { return state.contentRequests; }), 4);
}

}  // namespace
}  // namespace zorvane
