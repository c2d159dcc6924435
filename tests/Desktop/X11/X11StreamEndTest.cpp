#include "Zorvane/Platform/AVFoundation/CaptureAccess.hpp"
#include "Zorvane/ZVError.hpp"
#include "tests/Desktop/X11/X11StreamFixture.hpp"

namespace zorvane {
namespace {

using Points = std::vector<ScreenSamples::Point>;

constexpr int code(SCStreamErrorCode value) {
    return static_cast<int>(value);
}

TEST_F(X11StreamTest, AStreamStartsOnceAndStopsOnce) {
    auto stream = makeStream(std::make_shared<ScreenSamples>());
    ASSERT_EQ(codeOf(start(*stream)), 0);
    EXPECT_EQ(codeOf(start(*stream)), code(SCStreamErrorCode::attemptToStartStreamState));
    EXPECT_EQ(codeOf(stop(*stream)), 0);
    EXPECT_EQ(codeOf(stop(*stream)), code(SCStreamErrorCode::attemptToStopStreamState));
    EXPECT_EQ(codeOf(start(*stream)), code(SCStreamErrorCode::attemptToStartStreamState));
}

TEST_F(X11StreamTest, AStreamThatNeverStartedCannotStop) {
    auto stream = makeStream(std::make_shared<ScreenSamples>());
    EXPECT_EQ(codeOf(stop(*stream)), code(SCStreamErrorCode::attemptToStopStreamState));
    EXPECT_THROW(stream->addStreamOutput(std::make_shared<ScreenSamples>(), SCStreamOutputType::audio, queue_),
                 NSError);
}

TEST_F(X11StreamTest, WhatCannotBeCapturedFailsAtTheStart) {
    const auto samples = std::make_shared<ScreenSamples>();
    auto outside = capture().makeStream(filter(), {.sourceRect = CGRect::make(640, 0, 100, 100)}, samples);
    EXPECT_EQ(codeOf(start(*outside)), code(SCStreamErrorCode::failedToStart));

    SCContentFilter unknown = filter();
    unknown.display.displayID += 1;
    auto ofUnknown = capture().makeStream(unknown, {}, samples);
    EXPECT_EQ(codeOf(start(*ofUnknown)), code(SCStreamErrorCode::noCaptureSource));
}

TEST_F(X11StreamTest, NothingIsDeliveredAfterAStop) {
    for (int round = 0; round < 20; ++round) {
        auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
        auto stream = makeStream(samples);
        ASSERT_EQ(codeOf(start(*stream)), 0);
        client_.fill({0, 0, 640, 480}, static_cast<std::uint32_t>(round));
        ASSERT_EQ(codeOf(stop(*stream)), 0);
        const std::size_t delivered = samples->all().size();
        client_.fill({0, 0, 640, 480}, white);
        EXPECT_EQ(samples->all().size(), delivered);
    }
}

TEST_F(X11StreamTest, AStopWhileTheStreamStartsIsClean) {
    for (int round = 0; round < 20; ++round) {
        auto stream = makeStream(std::make_shared<ScreenSamples>());
        std::promise<std::exception_ptr> started;
        stream->startCapture([&](std::exception_ptr error) { started.set_value(std::move(error)); });
        EXPECT_EQ(codeOf(stop(*stream)), 0);
        const int startCode = codeOf(started.get_future().get());
        EXPECT_TRUE(startCode == 0 || startCode == code(SCStreamErrorCode::failedToStart)) << startCode;
    }
}

TEST_F(X11StreamTest, OfTwoStopsAtOnceOneWins) {
    auto stream = makeStream(std::make_shared<ScreenSamples>());
    ASSERT_EQ(codeOf(start(*stream)), 0);
    auto other = std::async(std::launch::async, [&] { return codeOf(stop(*stream)); });
    const int mine = codeOf(stop(*stream));
    const int theirs = other.get();
    EXPECT_EQ(mine + theirs, code(SCStreamErrorCode::attemptToStopStreamState)) << mine << " and " << theirs;
}

TEST_F(X11StreamTest, ARunningStreamMayBeDestroyed) {
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    samples->hold(1);
    for (int round = 0; round < 10; ++round) {
        auto stream = makeStream(samples);
        ASSERT_EQ(codeOf(start(*stream)), 0);
        samples->waitForStatus(SCFrameStatus::complete);
        stream.reset();
        samples->forget();
    }
    EXPECT_EQ(pixelAt(*samples->held(), 0, 0), 0U) << "a picture outlives its stream";
}

TEST_F(X11StreamTest, TheEndOfTheServerEndsTheStreamWithAnError) {
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto stream = makeStream(samples);
    ASSERT_EQ(codeOf(start(*stream)), 0);
    samples->waitForStatus(SCFrameStatus::idle);

    server_.kill();

    const auto error = samples->waitForEnd();
    EXPECT_NE(localizedDescription(error).find("went away"), std::string::npos) << localizedDescription(error);
    EXPECT_EQ(codeOf(stop(*stream)), code(SCStreamErrorCode::attemptToStopStreamState));
    EXPECT_TRUE(start(*capture().makeStream({}, {}, samples)));
    EXPECT_FALSE(platform_.captureAccess->request(ZVPermission::screenRecording));
}

TEST_F(X11StreamTest, TheEndOfTheServerDuringABurstEndsTheStreamWithAnError) {
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto stream = makeStream(samples, {.showsCursor = true});
    ASSERT_EQ(codeOf(start(*stream)), 0);
    for (std::uint32_t value = 1; value < 50; ++value) {
        client_.fill({0, 0, 640, 480}, value);
    }
    server_.kill();
    EXPECT_TRUE(samples->waitForEnd());
}

TEST_F(X11StreamTest, AServerThatHangsDoesNotHoldUpAStop) {
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto stream = makeStream(samples);
    ASSERT_EQ(codeOf(start(*stream)), 0);
    samples->waitForStatus(SCFrameStatus::complete);
    client_.fill({0, 0, 640, 480}, red);
    server_.suspend();
    EXPECT_EQ(codeOf(stop(*stream)), 0);
    server_.resume();
}

TEST_F(X11StreamTest, AServerThatHangsDoesNotHoldUpARestartOfTheService) {
    contentOf(capture());  // so that there is a connection
    server_.suspend();
    std::promise<std::exception_ptr> answer;
    capture().getShareableContent(
        SCShareableContentScope::all,
        [&](const SCShareableContent&, std::exception_ptr error) { answer.set_value(std::move(error)); });
    std::promise<void> restarted;
    capture().restartCaptureService([&](std::exception_ptr error) {
        EXPECT_FALSE(error);
        restarted.set_value();
    });
    restarted.get_future().get();
    server_.resume();
    answer.get_future().get();
    EXPECT_EQ(contentOf(capture()).displays.size(), 1U);
}

TEST_F(X11StreamTest, AServerThatHangsDoesNotHoldUpTheEndOfTheBackend) {
    contentOf(capture());
    server_.suspend();
    std::promise<void> answered;
    capture().getShareableContent(SCShareableContentScope::all,
                                  [&](const SCShareableContent&, const std::exception_ptr&) { answered.set_value(); });
    platform_ = Platform{};
    server_.resume();
    answered.get_future().get();
}

TEST_F(X11StreamTest, OnlyTheCapturedDisplayEndsTheStreamWhenItGoes) {
    client_.setMonitor("left", {0, 0, 400, 480}, true, true);
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto stream = makeStream(samples);
    ASSERT_EQ(codeOf(start(*stream)), 0);
    client_.setMonitor("right", {400, 0, 240, 480}, false, false);
    client_.fill({0, 0, 1, 1}, red);
    samples->waitForPixel(red);
    client_.removeMonitor("right");
    client_.fill({0, 0, 1, 1}, green);
    samples->waitForPixel(green);

    client_.removeMonitor("left");

    samples->waitForEnd();
}

TEST_F(X11StreamTest, AChangeOfResolutionEndsTheStreamWithAnError) {
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto stream = makeStream(samples);
    ASSERT_EQ(codeOf(start(*stream)), 0);
    samples->waitForStatus(SCFrameStatus::complete);

    client_.resizeScreen(320, 240);

    const int ended = codeOf(samples->waitForEnd());
    EXPECT_TRUE(ended == code(SCStreamErrorCode::systemStoppedStream) ||
                ended == code(SCStreamErrorCode::noCaptureSource))
        << ended;
}

}  // namespace
}  // namespace zorvane
