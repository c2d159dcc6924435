// What each piece of the pipeline adds to a sample on its way.
//
// CPU time measured on two shared cores of a virtual machine, -O2, and what is not to be passed there:
//
//     refreshInterval          15 ns, alone or with a second thread      45 ns
//     appendToRing             33 ns                                    100 ns
//     appendToPrepareAdaptor   47 ns                                    150 ns
//     appendToOpenRetimer      76 ns, 88 ns zero-based                  260 ns
//     handOverSound            33 ns                                    100 ns
//     handOverBacklog          32 ns for each item                      100 ns
//     appendToRepeater        118 ns, of which two clock reads          360 ns
//     watchForGaps             70 ns, of which a copy of the sample     220 ns
//
// None of them allocates: tests/Unit/Internal/SampleAllocationTest.cpp.
#include <benchmark/benchmark.h>

#include <memory>
#include <optional>

#include "Zorvane/Internal/AudioGapFiller.hpp"
#include "Zorvane/Internal/FrameRepeater.hpp"
#include "Zorvane/Internal/PrepareRingBufferAdaptor.hpp"
#include "Zorvane/Internal/RecordingIntervalBoundedRetimer.hpp"
#include "Zorvane/Internal/UnboundedBackpressureBuffer.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane {
namespace {

std::shared_ptr<VolatileRecordingInterval> recording() {
    auto interval = std::make_shared<VolatileRecordingInterval>();
    interval->start(1.0);
    return interval;
}

CMSampleBuffer picture() {
    static const auto pool = CVPixelBufferPool::make({4, 4, 16, CVPixelFormat::bgra, CGColorSpaceName::sRGB}, 8);
    return CMSampleBuffer::video(pool->take(), {}, {});
}

CMTime frameTime(std::int64_t index) {
    return CMTime::make(1'000'000'000 + index, 1'000'000);
}

void refreshInterval(benchmark::State& state) {
    static const auto interval = recording();
    StableRecordingInterval holder(interval);
    for (auto _ : state) {
        holder.refresh();
        benchmark::DoNotOptimize(holder.contains(2.0));
    }
}
BENCHMARK(refreshInterval)->Threads(1)->Threads(2);

void appendToRing(benchmark::State& state) {
    RingBuffer<CMSampleBuffer> ring(3);
    const CMSampleBuffer sample = picture();
    for (auto _ : state) {
        ring.append(sample);
    }
}
BENCHMARK(appendToRing);

void appendToPrepareAdaptor(benchmark::State& state) {
    PrepareRingBufferAdaptor<CMSampleBuffer> adaptor(RingBuffer<CMSampleBuffer>(3));
    const CMSampleBuffer sample = picture();
    for (auto _ : state) {
        adaptor.append(sample);
    }
}
BENCHMARK(appendToPrepareAdaptor);

void appendToOpenRetimer(benchmark::State& state) {
    RecordingIntervalBoundedRetimer<CMSampleBuffer> retimer(StableRecordingInterval(recording()), 3,
                                                            state.range(0) != 0);
    retimer.setHandler([](auto, const CMSampleBuffer&, CMTime time) { benchmark::DoNotOptimize(time); });
    const CMSampleBuffer sample = picture();
    std::int64_t index = 0;
    for (auto _ : state) {
        retimer.append(sample, frameTime(++index));
    }
}
BENCHMARK(appendToOpenRetimer)->ArgName("zeroBased")->Arg(0)->Arg(1);

void handOverSound(benchmark::State& state) {
    using Buffer = UnboundedBackpressureBuffer<CMSampleBuffer>;
    Buffer buffer([](const CMSampleBuffer& sample) {
        benchmark::DoNotOptimize(&sample);
        return Buffer::HandlerResult::handledItem;
    });
    const CMSampleBuffer sample = picture();
    for (auto _ : state) {
        benchmark::DoNotOptimize(buffer.append(sample));
    }
}
BENCHMARK(handOverSound);

// One refusal and then everything that has gathered, as after a disk that was slow for a while.
void handOverBacklog(benchmark::State& state) {
    using Buffer = UnboundedBackpressureBuffer<CMSampleBuffer>;
    bool isReady = false;
    Buffer buffer([&isReady](const CMSampleBuffer& sample) {
        benchmark::DoNotOptimize(&sample);
        return isReady ? Buffer::HandlerResult::handledItem : Buffer::HandlerResult::notReadyForItem;
    });
    const CMSampleBuffer sample = picture();
    for (auto _ : state) {
        isReady = false;
        for (std::int64_t item = 0; item < state.range(0); ++item) {
            buffer.append(sample);
        }
        isReady = true;
        benchmark::DoNotOptimize(buffer.partialFlush());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(handOverBacklog)->Arg(1000);

void appendToRepeater(benchmark::State& state) {
    FrameRepeater<CMSampleBuffer> repeater(1.0);
    repeater.setHandler(
        [](const CMSampleBuffer&, CMTime time, std::optional<CMTime>) { benchmark::DoNotOptimize(time); });
    const CMSampleBuffer sample = picture();
    std::int64_t index = 0;
    for (auto _ : state) {
        repeater.append(sample, frameTime(++index));
    }
}
BENCHMARK(appendToRepeater);

void watchForGaps(benchmark::State& state) {
    AudioGapFiller filler(Logger::forType<AudioGapFiller>(std::nullopt, {}, std::make_shared<ZVLogger>()));
    auto pcm = AVAudioPCMBuffer::make({}, 480);
    pcm->setFrameLength(480);
    CMSampleTimingInfo timing{CMTime::make(1, 48000), CMTime::make(0, 48000), kCMTimeInvalid};
    const CMSampleBuffer sample = CMSampleBuffer::audio(pcm, timing, std::make_shared<const CMFormatDescription>());
    for (auto _ : state) {
        timing.presentationTimeStamp.value += 480;
        benchmark::DoNotOptimize(filler.process(sample.copyWithNewTiming(timing)));
    }
}
BENCHMARK(watchForGaps);

}  // namespace
}  // namespace zorvane
