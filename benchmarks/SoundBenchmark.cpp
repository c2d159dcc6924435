// What it costs to bring sound onto the host clock: blocks of 10 ms at 48 kHz through an aligner and its resampler.
//
// CPU time measured on two shared cores of a virtual machine, -O2, and what is not to be passed there:
//
//     alignStereo           4.5 us, less than half a thousandth of a core      15 us
//     alignSurround          13 us                                             40 us
//     alignMonoIntegers     4.4 us                                             15 us
//
// Nothing of this allocates, in the FFmpeg libraries either.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Zorvane/Platform/CoreAudio/SoundAligner.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"

namespace zorvane {
namespace {

constexpr AVAudioFormat output{AVAudioCommonFormat::float32, 48000, 2};

/// Blocks of a source that runs 200 ppm too fast and whose host times are off by up to a millisecond.
void align(benchmark::State& state, const AVAudioFormat& source) {
    FFmpegAudioConverting converting;
    std::int64_t frames = 0;
    SoundAligner aligner(source, output, converting,
                         [&](const CMSampleBuffer& sample) { frames += sample.numSamples(); });
    const auto length = static_cast<std::int64_t>(source.sampleRate) / 100;
    const std::vector<std::byte> sound(static_cast<std::size_t>(length) * source.bytesPerFrame());
    std::int64_t block = 0;
    for (auto _ : state) {
        const std::chrono::nanoseconds jitter(block * 7'919 % 2'000 * 1'000 - 1'000'000);
        aligner.process({block * length, block * std::chrono::nanoseconds(9'998'000) + jitter, sound});
        ++block;
    }
    benchmark::DoNotOptimize(frames);
}

void alignStereo(benchmark::State& state) {
    align(state, output);
}
BENCHMARK(alignStereo)->Unit(benchmark::kMicrosecond);

void alignSurround(benchmark::State& state) {
    align(state, {AVAudioCommonFormat::float32, 48000, 6});
}
BENCHMARK(alignSurround)->Unit(benchmark::kMicrosecond);

void alignMonoIntegers(benchmark::State& state) {
    align(state, {AVAudioCommonFormat::int16, 44100, 1});
}
BENCHMARK(alignMonoIntegers)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace zorvane
