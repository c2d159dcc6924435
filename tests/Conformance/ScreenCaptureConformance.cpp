#include "tests/Conformance/ScreenCaptureConformance.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>

#include "tests/Support/HeardSound.hpp"
#include "tests/Support/SampleCollector.hpp"

namespace zorvane::test {

// A backend's own file instantiates the suite; a program without one is no mistake.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ScreenCaptureConformance);

namespace {

constexpr std::uint32_t red = 0xC02020;
constexpr std::uint32_t blue = 0x2030D0;
constexpr std::uint32_t green = 0x30B040;

/// Colours, without the unused byte.
std::uint32_t rgb(const CollectedSample& picture) {
    return picture.center & 0xFFFFFF;
}

/// A stream of the whole display at its size in points, and what came of it.
struct RunningStream {
    std::shared_ptr<SampleCollector> collector = std::make_shared<SampleCollector>();
    std::shared_ptr<SCStream> stream;

    std::size_t pictures() const { return collector->pictures().size(); }
    bool hasShown(std::uint32_t color) const {
        const auto pictures = collector->pictures();
        return !pictures.empty() && rgb(pictures.back()) == color;
    }
    std::exception_ptr stop() const {
        CompletionResult stopped;
        stream->stopCapture(stopped.handler());
        return stopped.wait();
    }
};

SCStreamConfiguration wholeDisplay(const SCDisplay& display) {
    SCStreamConfiguration configuration;
    configuration.showsCursor = false;
    configuration.width = static_cast<std::int32_t>(display.frame.size.width);
    configuration.height = static_cast<std::int32_t>(display.frame.size.height);
    return configuration;
}

RunningStream make(ScreenCaptureBackend& backend, const SCStreamConfiguration& configuration) {
    RunningStream running;
    const SCContentFilter filter{.kind = SCContentFilterKind::excludingApplications, .display = backend.display()};
    running.stream = backend.screenCapture().makeStream(filter, configuration, running.collector);
    running.stream->addStreamOutput(running.collector, SCStreamOutputType::screen,
                                    DispatchQueue::serial("ScreenCaptureConformance"));
    return running;
}

RunningStream start(ScreenCaptureBackend& backend, const SCStreamConfiguration& configuration) {
    RunningStream running = make(backend, configuration);
    CompletionResult started;
    running.stream->startCapture(started.handler());
    EXPECT_EQ(started.wait(), nullptr);
    EXPECT_TRUE(backend.waitUntil([&] { return running.pictures() > 0; })) << "no first picture";
    return running;
}

RunningStream start(ScreenCaptureBackend& backend) {
    return start(backend, wholeDisplay(backend.display()));
}

void fillDisplay(ScreenCaptureBackend& backend, std::uint32_t color) {
    const CGRect frame = backend.display().frame;
    backend.fill(CGRect::make(0, 0, frame.size.width, frame.size.height), color);
}

double seconds(HostClock& clock) {
    return std::chrono::duration<double>(clock.now()).count();
}

}  // namespace

TEST_P(ScreenCaptureConformance, ContentListsTheDisplay) {
    auto listed = std::make_shared<std::atomic<bool>>(false);
    const SCDisplay display = backend_->display();
    backend_->screenCapture().getShareableContent(
        SCShareableContentScope::all, [listed, display](const SCShareableContent& content, std::exception_ptr error) {
            for (const SCDisplay& known : content.displays) {
                *listed = *listed || (!error && known.displayID == display.displayID && known.frame == display.frame);
            }
        });
    EXPECT_TRUE(backend_->waitUntil([&] { return listed->load(); }));
}

TEST_P(ScreenCaptureConformance, TheFirstPictureShowsWhatIsThereAtTheStart) {
    fillDisplay(*backend_, red);
    const double before = seconds(backend_->clock());
    const RunningStream running = start(*backend_);
    const CollectedSample first = running.collector->pictures().front();
    EXPECT_EQ(rgb(first), red);
    EXPECT_EQ(first.layout->width, static_cast<std::int32_t>(backend_->display().frame.size.width));
    EXPECT_EQ(first.layout->height, static_cast<std::int32_t>(backend_->display().frame.size.height));
    EXPECT_GE(first.hostTime, before);
    EXPECT_LE(first.hostTime, seconds(backend_->clock()));
}

TEST_P(ScreenCaptureConformance, EveryChangeIsShownWithARisingStamp) {
    const RunningStream running = start(*backend_);
    for (const std::uint32_t color : {red, green, blue, red}) {
        const double before = seconds(backend_->clock());
        fillDisplay(*backend_, color);
        ASSERT_TRUE(backend_->waitUntil([&] { return running.hasShown(color); })) << std::hex << color;
        EXPECT_GE(running.collector->pictures().back().hostTime, before);
    }
    const auto pictures = running.collector->pictures();
    for (std::size_t index = 1; index < pictures.size(); ++index) {
        EXPECT_GT(pictures[index].stamp, pictures[index - 1].stamp);
    }
}

TEST_P(ScreenCaptureConformance, ACropShowsItsPartOfTheDisplayOnly) {
    fillDisplay(*backend_, red);
    backend_->fill(CGRect::make(100, 50, 80, 60), blue);
    SCStreamConfiguration configuration = wholeDisplay(backend_->display());
    configuration.sourceRect = CGRect::make(100, 50, 80, 60);
    configuration.width = 80;
    configuration.height = 60;
    const RunningStream running = start(*backend_, configuration);
    EXPECT_EQ(rgb(running.collector->pictures().back()), blue);
    EXPECT_EQ(running.collector->pictures().back().layout->width, 80);
    EXPECT_EQ(running.collector->pictures().back().layout->height, 60);

    backend_->fill(CGRect::make(100, 50, 80, 60), green);
    EXPECT_TRUE(backend_->waitUntil([&] { return running.hasShown(green); }));
}

TEST_P(ScreenCaptureConformance, ABurstOfChangesKeepsToTheMinimumFrameIntervalAndEndsWithTheLastOne) {
    constexpr double interval = 0.1;
    SCStreamConfiguration configuration = wholeDisplay(backend_->display());
    configuration.minimumFrameInterval = CMTime::make(1, 10);
    const RunningStream running = start(*backend_, configuration);
    for (std::uint32_t step = 0; step < 20; ++step) {
        fillDisplay(*backend_, 0x101010 * (step % 8));
        backend_->pass(0.01);
    }
    fillDisplay(*backend_, green);
    ASSERT_TRUE(backend_->waitUntil([&] { return running.hasShown(green); }));
    const auto pictures = running.collector->pictures();
    ASSERT_GE(pictures.size(), 3u);
    for (std::size_t index = 1; index < pictures.size(); ++index) {
        const double sinceFirst = pictures[index].hostTime - pictures[0].hostTime;
        EXPECT_GE(sinceFirst, (static_cast<double>(index) - 0.5) * interval) << "picture " << index;
    }
}

TEST_P(ScreenCaptureConformance, AStillScreenGivesNoPicturesAndSaysIdleAtMostOnce) {
    fillDisplay(*backend_, blue);
    const RunningStream running = start(*backend_);
    ASSERT_TRUE(backend_->waitUntil([&] { return running.hasShown(blue); }));
    backend_->pass(0.2);
    const std::size_t before = running.collector->samples().size();
    backend_->pass(0.5);
    EXPECT_EQ(running.collector->samples().size(), before);
    const auto samples = running.collector->samples();
    EXPECT_LE(std::count_if(samples.begin(), samples.end(),
                            [](const CollectedSample& sample) { return sample.status == SCFrameStatus::idle; }),
              static_cast<std::ptrdiff_t>(running.pictures()));
}

TEST_P(ScreenCaptureConformance, NoSampleComesAfterTheStopHasCompleted) {
    const RunningStream witness = start(*backend_);
    const RunningStream running = start(*backend_);
    EXPECT_EQ(running.stop(), nullptr);
    const std::size_t atStop = running.collector->samples().size();
    fillDisplay(*backend_, green);
    ASSERT_TRUE(backend_->waitUntil([&] { return witness.hasShown(green); }));
    EXPECT_EQ(running.collector->samples().size(), atStop);
    EXPECT_TRUE(running.collector->stops().empty()) << "a stop that was asked for is told to the completion only";
}

TEST_P(ScreenCaptureConformance, AStreamIsStartedAndStoppedOnce) {
    const RunningStream fresh = make(*backend_, wholeDisplay(backend_->display()));
    EXPECT_EQ(streamErrorCode(fresh.stop()), SCStreamErrorCode::attemptToStopStreamState);

    const RunningStream running = start(*backend_);
    CompletionResult startedAgain;
    running.stream->startCapture(startedAgain.handler());
    EXPECT_EQ(streamErrorCode(startedAgain.wait()), SCStreamErrorCode::attemptToStartStreamState);
    EXPECT_EQ(running.stop(), nullptr);
    EXPECT_EQ(streamErrorCode(running.stop()), SCStreamErrorCode::attemptToStopStreamState);
}

TEST_P(ScreenCaptureConformance, AStreamOfAnUnknownDisplayDoesNotStart) {
    const SCContentFilter filter{.kind = SCContentFilterKind::excludingApplications,
                                 .display = {.displayID = 0xDEAD, .frame = CGRect::make(0, 0, 64, 64)}};
    const auto stream = backend_->screenCapture().makeStream(filter, wholeDisplay(filter.display), {});
    CompletionResult started;
    stream->startCapture(started.handler());
    EXPECT_NE(started.wait(), nullptr);
}

TEST_P(ScreenCaptureConformance, TwoStreamsShowTheSameChange) {
    const RunningStream one = start(*backend_);
    const RunningStream other = start(*backend_);
    fillDisplay(*backend_, red);
    EXPECT_TRUE(backend_->waitUntil([&] { return one.hasShown(red) && other.hasShown(red); }));
}

TEST_P(ScreenCaptureConformance, SoundJoinsExactlyBesideThePicturesAndEndsWithTheStop) {
    SCStreamConfiguration configuration = wholeDisplay(backend_->display());
    configuration.capturesAudio = true;
    const RunningStream running = make(*backend_, configuration);
    running.stream->addStreamOutput(running.collector, SCStreamOutputType::audio,
                                    DispatchQueue::serial("ScreenCaptureConformance.Audio"));
    const double before = seconds(backend_->clock());
    CompletionResult started;
    running.stream->startCapture(started.handler());
    ASSERT_EQ(started.wait(), nullptr);
    const auto heard = [&running] { return HeardSound(running.collector->samples()); };
    EXPECT_TRUE(backend_->waitUntil([&] { return heard().end() - heard().begin() > 0.5 && running.pictures() > 0; }));
    EXPECT_EQ(running.stop(), nullptr);
    EXPECT_TRUE(heard().isContiguous());
    EXPECT_GT(heard().begin(), before - 0.1) << "blocks may have begun before the start";
    EXPECT_LT(heard().end(), seconds(backend_->clock()) + 0.1);
    const std::size_t atStop = running.collector->samples().size();
    backend_->pass(0.2);
    EXPECT_EQ(running.collector->samples().size(), atStop);
}

TEST_P(ScreenCaptureConformance, ARunningStreamMayBeDestroyedAtAnyTime) {
    const RunningStream witness = start(*backend_);
    for (int round = 0; round < 10; ++round) {
        RunningStream running = start(*backend_);
        fillDisplay(*backend_, round % 2 == 0 ? red : blue);  // so that a picture is under way
        running = {};
    }
    fillDisplay(*backend_, green);
    EXPECT_TRUE(backend_->waitUntil([&] { return witness.hasShown(green); }));
}

TEST_P(ScreenCaptureConformance, NoMorePicturesAreOutThanTheQueueDepthAndNoChangeIsLost) {
    SCStreamConfiguration configuration = wholeDisplay(backend_->display());
    configuration.queueDepth = 3;
    const RunningStream running = make(*backend_, configuration);
    running.collector->keepBuffers(true);
    CompletionResult started;
    running.stream->startCapture(started.handler());
    ASSERT_EQ(started.wait(), nullptr);
    for (std::uint32_t step = 1; step <= 10; ++step) {
        fillDisplay(*backend_, 0x080808 * step);
        backend_->pass(0.05);
    }
    EXPECT_EQ(running.collector->keptBuffers(), 3u);
    fillDisplay(*backend_, blue);
    running.collector->keepBuffers(false);
    EXPECT_TRUE(backend_->waitUntil([&] { return running.hasShown(blue); }));
}

}  // namespace zorvane::test
