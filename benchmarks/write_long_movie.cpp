// Writes the movie of a ten minute recording as fast as the encoder can, through the asset writer that recordings use:
// 18,000 pictures of moving detail, 30 a second. Prints, as one JSON object, how long the finish took, from asking for
// it until the file was complete and on the disk, and how many bytes were written altogether and by the finish.
//
//     write_long_movie FILE
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <future>
#include <thread>
#include <utility>
#include <vector>

#include "Zorvane/Platform/FFmpeg/FFmpegMediaWriting.hpp"
#include "Zorvane/Platform/Foundation/OutputFile.hpp"

namespace {

using namespace zorvane;
using Clock = std::chrono::steady_clock;

constexpr std::int32_t width = 640;
constexpr std::int32_t height = 360;
constexpr std::int32_t framesPerSecond = 30;
constexpr std::int32_t frames = 10 * 60 * framesPerSecond;
constexpr std::int32_t travel = 256;  // pixels that the scene is larger than the picture, each way

std::atomic<std::uint64_t> bytesWritten = 0;

/// Passes everything on and counts the bytes, also those that overwrite others.
class CountedFile final : public OutputFile {
  public:
    explicit CountedFile(std::unique_ptr<OutputFile> file) : file_(std::move(file)) {}
    void append(std::span<const std::byte> bytes) override {
        bytesWritten += bytes.size();
        file_->append(bytes);
    }
    void overwrite(std::uint64_t offset, std::span<const std::byte> bytes) override {
        bytesWritten += bytes.size();
        file_->overwrite(offset, bytes);
    }
    void truncate(std::uint64_t size) override { file_->truncate(size); }
    void sync() override { file_->sync(); }
    void close() override { file_->close(); }

  private:
    const std::unique_ptr<OutputFile> file_;
};

/// A large picture over which the movie's window moves.
class Scene {
  public:
    Scene() : pixels_(std::size_t{width + travel} * (height + travel)) {
        for (std::size_t index = 0; index < pixels_.size(); ++index) {
            const std::size_t x = index % (width + travel);
            const std::size_t y = index / (width + travel);
            const auto soft = static_cast<std::uint32_t>((x / 3 + y / 2) % 200);
            pixels_[index] = ((x / 24) ^ (y / 16)) % 5 == 0 ? 0xE0E0E0 : soft << 16 | (soft / 2 + 40) << 8 | 90;
        }
    }

    void draw(std::int32_t frame, CVPixelBuffer& picture) const {
        const std::int32_t x = reflected(frame * 3);
        const std::int32_t y = reflected(frame);
        for (std::int32_t row = 0; row < height; ++row) {
            std::memcpy(picture.mutableBytes() + std::size_t{picture.layout().bytesPerRow} * row,
                        &pixels_[static_cast<std::size_t>(y + row) * (width + travel) + x], std::size_t{width} * 4);
        }
    }

  private:
    static std::int32_t reflected(std::int32_t way) {
        const std::int32_t place = way % (2 * travel);
        return place < travel ? place : 2 * travel - 1 - place;
    }

    std::vector<std::uint32_t> pixels_;
};

AVVideoSettings settingsOfRecordings(AVMediaWriting& writing) {
    const auto assistant = writing.makeOutputSettingsAssistant(AVOutputSettingsPreset::h264_3840x2160);
    assistant->setSourceVideoFormat({.mediaType = CMMediaType::video, .dimensions = {width, height}});
    AVVideoSettings settings = *assistant->videoSettings();
    settings.compressionProperties.allowFrameReordering = false;
    return settings;
}

void appendFrames(AVAssetWriterInput& input) {
    const Scene scene;
    const auto pool = CVPixelBufferPool::make({width, height, width * 4, CVPixelFormat::bgra}, 8);
    for (std::int32_t frame = 0; frame < frames; ++frame) {
        const CVPixelBufferRef picture = pool->take();
        scene.draw(frame, *picture);
        while (!input.isReadyForMoreMediaData()) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        if (!input.append(
                CMSampleBuffer::video(picture, {.presentationTimeStamp = CMTime::make(frame, framesPerSecond)}, {}))) {
            return;  // the writer's error says why
        }
    }
}

double finish(AVAssetWriter& writer) {
    std::promise<void> done;
    const auto before = Clock::now();
    writer.finishWriting([&done] { done.set_value(); });
    done.get_future().wait();
    const std::chrono::duration<double> taken = Clock::now() - before;
    if (writer.error()) {
        std::rethrow_exception(writer.error());
    }
    return taken.count();
}

void writeMovie(const char* path) {
    FFmpegWriterParts parts;
    parts.makeFile = [](const std::filesystem::path& file) {
        return std::make_unique<CountedFile>(makeOutputFile(file));
    };
    FFmpegMediaWriting writing(std::move(parts));
    const auto writer = writing.makeAssetWriter(path, AVFileType::quickTimeMovie);
    const auto input = std::make_shared<AVAssetWriterInput>(settingsOfRecordings(writing));
    input->setExpectsMediaDataInRealTime(true);
    writer->add(input);
    if (!writer->startWriting()) {
        std::rethrow_exception(writer->error());
    }
    writer->startSession(kCMTimeZero);
    appendFrames(*input);
    writer->endSession(CMTime::make(frames, framesPerSecond));
    input->markAsFinished();
    const std::uint64_t before = bytesWritten;
    const double taken = finish(*writer);
    std::printf("{\"frames\": %d, \"finishSeconds\": %.6f, \"bytesWritten\": %llu, \"bytesOfFinish\": %llu}\n", frames,
                taken, static_cast<unsigned long long>(bytesWritten),
                static_cast<unsigned long long>(bytesWritten - before));
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: write_long_movie FILE\n", stderr);
        return 2;
    }
    try {
        writeMovie(arguments[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "write_long_movie: %s\n", error.what());
        return 1;
    }
}
