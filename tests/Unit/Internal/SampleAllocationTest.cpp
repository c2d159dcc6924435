// A sample on its way through the pipeline allocates nothing once every piece is warm.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "Zorvane/Internal/AVAssetWriterInputBufferAdaptor.hpp"
#include "Zorvane/Internal/AudioGapFiller.hpp"
#include "Zorvane/Internal/FrameRepeater.hpp"
#include "Zorvane/Internal/PrepareRingBufferAdaptor.hpp"
#include "Zorvane/Internal/Recorders/AudioSamplePath.hpp"
#include "Zorvane/Internal/Recorders/VideoSamplePath.hpp"
#include "Zorvane/Internal/RecordingIntervalBoundedRetimer.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "tests/Support/AllocationCounter.hpp"
#include "tests/Support/FakeAssetWriter.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/ManualTime.hpp"
#include "tests/Support/Timeline.hpp"

namespace zorvane {
namespace {

using testing::at;
using testing::recording;

class SampleAllocationTest : public testing::ManualTimeTest {
  protected:
    void SetUp() override {
        if (!testing::AllocationCounter::isAvailable()) {
            GTEST_SKIP() << "a sanitizer has the allocator";
        }
    }

    /// How much `step(index)` allocates on this thread in a thousand rounds, after ten to warm up.
    static std::size_t allocations(const std::function<void(int index)>& step) {
        constexpr int warmUp = 10;
        constexpr int rounds = 1000;
        for (int index = 0; index < warmUp; ++index) {
            step(index);
        }
        const testing::AllocationCounter counter;
        for (int index = warmUp; index < warmUp + rounds; ++index) {
            step(index);
        }
        return counter.count();
    }

    static CMTime frameTime(int index) { return CMTime::make(100'000 + 17 * index, 1000); }

    /// Logs nowhere, at the threshold of a release.
    const Logger logger = Logger::forType<SampleAllocationTest>(std::nullopt, {}, std::make_shared<ZVLogger>());
    const CMSampleBuffer frame = testing::picture(at(1));
    std::size_t handled = 0;
};

TEST_F(SampleAllocationTest, TheCounterSeesAllocations) {
    std::unique_ptr<int> kept;
    EXPECT_EQ(allocations([&kept](int index) { kept = std::make_unique<int>(index); }), 1000u);
}

TEST_F(SampleAllocationTest, RefreshingTheInterval) {
    StableRecordingInterval interval(recording(1));
    EXPECT_EQ(allocations([&](int) { interval.refresh(); }), 0u);
}

TEST_F(SampleAllocationTest, HoldingSamplesBeforeTheStart) {
    PrepareRingBufferAdaptor<CMSampleBuffer> adaptor(RingBuffer<CMSampleBuffer>(3));
    RecordingIntervalBoundedRetimer<CMSampleBuffer> retimer(StableRecordingInterval(recording()), 3, false);
    EXPECT_EQ(allocations([&](int index) {
                  adaptor.append(frame);
                  retimer.append(frame, frameTime(index));
              }),
              0u);
}

TEST_F(SampleAllocationTest, RetimingFramesInTheRecordingAndReplayingAnEmptyRing) {
    PrepareRingBufferAdaptor<CMSampleBuffer> adaptor(RingBuffer<CMSampleBuffer>(3));
    RecordingIntervalBoundedRetimer<CMSampleBuffer> retimer(StableRecordingInterval(recording(1)), 3, true);
    retimer.setHandler([this](auto, const CMSampleBuffer&, CMTime) { ++handled; });
    EXPECT_EQ(allocations([&](int index) {
                  for (const CMSampleBuffer& held : adaptor.buffer()) {
                      handled += static_cast<std::size_t>(held.numSamples());
                  }
                  adaptor.clear();
                  retimer.append(frame, frameTime(index));
              }),
              0u);
    EXPECT_EQ(handled, 1010u);
}

TEST_F(SampleAllocationTest, WatchingFramesForARepeat) {
    FrameRepeater<CMSampleBuffer> repeater(1.0);
    repeater.setHandler([this](const CMSampleBuffer&, CMTime, std::optional<CMTime>) { ++handled; });
    EXPECT_EQ(allocations([&](int index) { repeater.append(frame, frameTime(index)); }), 0u);
    EXPECT_EQ(handled, 1010u);
}

TEST_F(SampleAllocationTest, HandingSoundOverWithAndWithoutBackpressure) {
    UnboundedBackpressureBuffer<CMSampleBuffer> buffer([this](const CMSampleBuffer&) {
        using Result = UnboundedBackpressureBuffer<CMSampleBuffer>::HandlerResult;
        ++handled;
        return handled % 7 < 3 ? Result::notReadyForItem : Result::handledItem;
    });
    EXPECT_EQ(allocations([&](int) {
                  buffer.append(frame);
                  buffer.partialFlush();
              }),
              0u);
}

TEST_F(SampleAllocationTest, WatchingSoundForGaps) {
    AudioGapFiller filler(logger);
    CMSampleBuffer sample = testing::sound(at(1, 48000), 480);
    EXPECT_EQ(allocations([&](int index) {
                  CMSampleTimingInfo timing = sample.timing();
                  timing.presentationTimeStamp = CMTime::make(48000 + 480 * index, 48000);
                  handled += filler.process(sample.copyWithNewTiming(timing)).size();
              }),
              0u);
    EXPECT_EQ(handled, 1010u) << "no gaps";
}

TEST_F(SampleAllocationTest, BringingSoundFromItsSourceToTheHost) {
    auto sink = std::make_unique<HostAudioSampleSink>([this](const CMSampleBuffer&) { return ++handled > 0; }, logger);
    AudioSamplePath path(StableRecordingInterval(recording(1)), logger, {});
    path.connect(std::move(sink));
    const HostTimeSynchronizationClock clockOfSource;
    const CMSampleBuffer sample = testing::sound(at(1, 48000), 480);
    EXPECT_EQ(allocations([&](int index) {
                  CMSampleTimingInfo timing = sample.timing();
                  timing.presentationTimeStamp = CMTime::make(48000 + 480 * index, 48000);
                  path.process(sample.copyWithNewTiming(timing), &clockOfSource);
              }),
              0u);
    EXPECT_EQ(handled, 1010u);
}

class CountingSink final : public AVAssetWriterInputSink {
  public:
    bool isReadyForMoreMediaData() const override { return true; }
    bool append(const CMSampleBuffer&) override { return ++count > 0; }
    void markAsFinished() override {}

    std::size_t count = 0;
};

/// Writers without inputs.
class IdleWriters final : public OutputAssetWriters {
  public:
    AVAssetWriter& audioAssetWriter() const override { return *writer_; }
    AVAssetWriter& videoAssetWriter() const override { return *writer_; }
    bool expectsZeroBasedVideoPTS() const override { return true; }
    void startWriting() override {}
    Task<std::vector<std::filesystem::path>> finishWriting() override { co_return {}; }

  private:
    const std::shared_ptr<AVAssetWriter> writer_ = std::make_shared<testing::FakeAssetWriter>();
};

TEST_F(SampleAllocationTest, BringingPicturesFromTheirSourceToTheWriter) {
    const auto sink = std::make_shared<CountingSink>();
    const auto input = std::make_shared<AVAssetWriterInput>(AVVideoSettings());
    input->attach(sink);
    const MediaOutput output(std::make_shared<IdleWriters>(), {}, "Starting", logger, nullptr);
    VideoSamplePath path(StableRecordingInterval(recording(1)), logger);
    path.connect(output, input);
    EXPECT_EQ(allocations([&](int index) { path.process(frame, frameTime(index)); }), 0u);
    EXPECT_EQ(sink->count, 1010u);
}

}  // namespace
}  // namespace zorvane
