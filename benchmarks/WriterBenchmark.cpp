// What a picture and a second of sound cost the writer, from append to file, and what starting and finishing cost.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <future>
#include <random>
#include <thread>
#include <vector>

#include "Zorvane/Platform/FFmpeg/FFmpegMediaWriting.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

constexpr std::int32_t width = 1920;
constexpr std::int32_t height = 1080;

/// Processor time of all threads: the encoder's are not the benchmark's own.
double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Something like lines of text: each picture is the one before it, moved up by `scroll` rows.
std::vector<CVPixelBufferRef> makePictures(std::int32_t count, std::int32_t scroll) {
    const CVPixelLayout layout{width, height, std::size_t{width} * 4, CVPixelFormat::bgra, CGColorSpaceName::sRGB};
    std::mt19937 random(1);
    std::vector<std::uint32_t> page(std::size_t{width} * static_cast<std::size_t>(height + count * scroll), 0xffffffff);
    for (std::size_t index = 0; index < page.size(); ++index) {
        const bool isTextRow = index / width % 20 < 12;
        if (isTextRow && random() % 4 == 0) {
            page[index] = 0xff202020;
        }
    }
    const auto pool = CVPixelBufferPool::make(layout, static_cast<std::size_t>(count));
    std::vector<CVPixelBufferRef> pictures;
    for (std::int32_t index = 0; index < count; ++index) {
        pictures.push_back(pool->take());
        std::memcpy(pictures.back()->mutableBytes(),
                    page.data() + std::size_t{width} * static_cast<std::size_t>(index * scroll), layout.byteSize());
    }
    return pictures;
}

class Recording {
  public:
    Recording() : path_(std::filesystem::temp_directory_path() / "zorvane-writer-benchmark.mov") {
        std::filesystem::remove(path_);
        FFmpegMediaWriting media;
        const auto assistant = media.makeOutputSettingsAssistant(AVOutputSettingsPreset::h264_3840x2160);
        AVVideoSettings settings = *assistant->videoSettings();
        settings.width = width;
        settings.height = height;
        input_ = std::make_shared<AVAssetWriterInput>(settings);
        writer_ = media.makeAssetWriter(path_, AVFileType::quickTimeMovie);
        writer_->add(input_);
        if (!writer_->startWriting()) {
            std::rethrow_exception(writer_->error());
        }
        writer_->startSession(kCMTimeZero);
    }

    ~Recording() {
        writer_.reset();
        std::filesystem::remove(path_);
    }

    void append(const CVPixelBufferRef& picture, std::int32_t ticks) {
        while (!input_->isReadyForMoreMediaData()) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        time_ += ticks;
        input_->append(CMSampleBuffer::video(picture, {kCMTimeInvalid, CMTime::make(time_, 60), kCMTimeInvalid}, {}));
    }

    void finish() {
        std::promise<void> finished;
        writer_->finishWriting([&finished] { finished.set_value(); });
        finished.get_future().wait();
        if (const auto error = writer_->error()) {
            std::rethrow_exception(error);
        }
    }

    std::uintmax_t fileSize() const { return std::filesystem::file_size(path_); }

  private:
    const std::filesystem::path path_;
    std::shared_ptr<AVAssetWriterInput> input_;
    std::shared_ptr<AVAssetWriter> writer_;
    std::int64_t time_ = -1;
};

void report(benchmark::State& state, double processorTime, const Recording& recording) {
    const auto count = static_cast<double>(state.iterations());
    state.counters["cpu_ms_per_picture"] = processorTime * 1e3 / count;
    state.counters["bytes_per_picture"] = static_cast<double>(recording.fileSize()) / count;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["process_peak_MiB"] = static_cast<double>(usage.ru_maxrss) / 1024;
}

/// One picture again and again, a second apart, as a still screen gives it.
void BM_WriteStillPicture(benchmark::State& state) {
    const auto pictures = makePictures(1, 0);
    Recording recording;
    const double before = processorSeconds();
    for (auto _ : state) {
        recording.append(pictures.front(), 60);
    }
    recording.finish();
    report(state, processorSeconds() - before, recording);
}
BENCHMARK(BM_WriteStillPicture)->Iterations(600)->Unit(benchmark::kMillisecond);

/// Pictures that scroll by some rows.
void BM_WriteScrollingPicture(benchmark::State& state) {
    const auto pictures = makePictures(30, static_cast<std::int32_t>(state.range(0)));
    Recording recording;
    std::size_t index = 0;
    const double before = processorSeconds();
    for (auto _ : state) {
        recording.append(pictures[index++ % pictures.size()], 1);
    }
    recording.finish();
    report(state, processorSeconds() - before, recording);
}
BENCHMARK(BM_WriteScrollingPicture)->Arg(4)->Iterations(300)->Unit(benchmark::kMillisecond);

/// A movie of sound alone, in blocks of 10 ms.
class SoundRecording {
  public:
    SoundRecording() : path_(std::filesystem::temp_directory_path() / "zorvane-writer-benchmark-sound.mov") {
        std::filesystem::remove(path_);
        FFmpegMediaWriting media;
        const auto assistant = media.makeOutputSettingsAssistant(AVOutputSettingsPreset::h264_1920x1080);
        input_ = std::make_shared<AVAssetWriterInput>(*assistant->audioSettings());
        writer_ = media.makeAssetWriter(path_, AVFileType::quickTimeMovie);
        writer_->add(input_);
        if (!writer_->startWriting()) {
            std::rethrow_exception(writer_->error());
        }
        writer_->startSession(kCMTimeZero);
    }

    ~SoundRecording() {
        writer_.reset();
        std::filesystem::remove(path_);
    }

    void append(const std::shared_ptr<AVAudioPCMBuffer>& block) {
        while (!input_->isReadyForMoreMediaData()) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        const CMTime time = CMTime::make(blocks_++, 100);
        input_->append(CMSampleBuffer::audio(block, {CMTime::make(1, 48000), time, kCMTimeInvalid}, nullptr));
    }

    void finish() {
        writer_->endSession(CMTime::make(blocks_, 100));
        std::promise<void> finished;
        writer_->finishWriting([&finished] { finished.set_value(); });
        finished.get_future().wait();
        if (const auto error = writer_->error()) {
            std::rethrow_exception(error);
        }
    }

    void skip(std::int64_t blocks) { blocks_ += blocks; }

    std::uintmax_t fileSize() const { return std::filesystem::file_size(path_); }

  private:
    const std::filesystem::path path_;
    std::shared_ptr<AVAssetWriterInput> input_;
    std::shared_ptr<AVAssetWriter> writer_;
    std::int64_t blocks_ = 0;
};

/// One second of stereo sound: a chord under noise, or nothing.
std::vector<std::shared_ptr<AVAudioPCMBuffer>> makeSecond(float level) {
    constexpr AVAudioFormat format{AVAudioCommonFormat::float32, 48000, 2};
    constexpr std::uint32_t frames = 480;
    std::mt19937 random(1);
    std::vector<std::shared_ptr<AVAudioPCMBuffer>> blocks;
    for (std::uint32_t block = 0; block < 100; ++block) {
        blocks.push_back(AVAudioPCMBuffer::make(format, frames));
        blocks.back()->setFrameLength(frames);
        auto* sample = reinterpret_cast<float*>(blocks.back()->mutableBytes().data());
        for (std::uint32_t frame = 0; frame < frames; ++frame) {
            const float time = static_cast<float>(block * frames + frame) / 48000;
            for (const float pitch : {220.0F, 277.0F}) {
                const float noise = static_cast<float>(random() % 2000) / 1000 - 1;
                const float tone = std::sin(6.2831853F * pitch * time) + std::sin(6.2831853F * 5 * pitch * time) / 3;
                *sample++ = level * (tone + noise / 10) / 2;
            }
        }
    }
    return blocks;
}

/// What a second of sound costs: of a processor, and in the file.
void BM_WriteSecondOfSound(benchmark::State& state) {
    const auto second = makeSecond(state.range(0) == 0 ? 0 : 0.5F);
    SoundRecording recording;
    const double before = processorSeconds();
    for (auto _ : state) {
        for (const auto& block : second) {
            recording.append(block);
        }
    }
    recording.finish();
    const auto seconds = static_cast<double>(state.iterations());
    state.counters["cpu_ms_per_second"] = (processorSeconds() - before) * 1e3 / seconds;
    state.counters["bytes_per_second"] = static_cast<double>(recording.fileSize()) / seconds;
}
BENCHMARK(BM_WriteSecondOfSound)->ArgName("sound")->Arg(0)->Arg(1)->Iterations(120)->Unit(benchmark::kMillisecond);

/// An hour without a sample, which is silence as soon as the next sample shows it.
void BM_FillHourOfSilence(benchmark::State& state) {
    const auto second = makeSecond(0.5F);
    for (auto _ : state) {
        SoundRecording recording;
        recording.append(second.front());
        recording.skip(std::int64_t{3600} * 100);
        recording.append(second.front());
        recording.finish();
        state.counters["bytes_per_second"] = static_cast<double>(recording.fileSize()) / 3600;
    }
}
BENCHMARK(BM_FillHourOfSilence)->UseRealTime()->Iterations(3)->Unit(benchmark::kMillisecond);

void BM_StartWriting(benchmark::State& state) {
    for (auto _ : state) {
        const Recording recording;
    }
}
BENCHMARK(BM_StartWriting)->Unit(benchmark::kMillisecond);

/// Finishing after ten minutes at 30 pictures a second, of which the index is the only cost.
void BM_FinishTenMinutes(benchmark::State& state) {
    const auto pictures = makePictures(1, 0);
    for (auto _ : state) {
        state.PauseTiming();
        Recording recording;
        for (int index = 0; index < 18'000; ++index) {
            recording.append(pictures.front(), 2);
        }
        state.ResumeTiming();
        recording.finish();
    }
}
BENCHMARK(BM_FinishTenMinutes)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zorvane
