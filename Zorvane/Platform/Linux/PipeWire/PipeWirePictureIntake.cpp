#include "Zorvane/Platform/Linux/PipeWire/PipeWirePictureIntake.hpp"

#include <exception>
#include <string>
#include <utility>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

constexpr std::size_t mostPicturesOut = 12;  // what a writer's queue and its encoder hold, and some
constexpr std::chrono::seconds betweenReports{10};

CVPixelLayout layoutOf(CMVideoDimensions size) {
    constexpr std::size_t alignment = 32;
    const auto width = static_cast<std::size_t>(size.width);
    return {.width = size.width,
            .height = size.height,
            .bytesPerRow = (width + alignment - 1) / alignment * alignment,
            .format = CVPixelFormat::yCbCr420VideoRange};
}

}  // namespace

CMSampleBuffer PipeWirePictureIntake::take(const PipeWirePieces& pieces, std::size_t count,
                                           const PipeWireVideoFormat& format, std::chrono::nanoseconds time) noexcept {
    try {
        if (time <= last_) {
            return {};
        }
        last_ = time;
        if (format != format_) {
            adopt(format);
        }
        const auto picture = pictureIn(pieces, count, format.encoding, format.size);
        if (!converter_) {
            return {};
        }
        if (!picture) {
            report("A camera's picture is incomplete", "its rows don't fit into its memory", 1);
            return {};
        }
        return convert(*picture, time);
    } catch (const std::exception& error) {
        report("A camera's picture can't be read", error.what(), 1);
        return {};
    }
}

void PipeWirePictureIntake::adopt(const PipeWireVideoFormat& format) {
    format_ = format;
    converter_.reset();
    auto converter = converting_.makeConverter(format.encoding, format.size);
    const CVPixelLayout layout = layoutOf(format.size);
    if (!pool_ || pool_->layout() != layout) {
        pool_ = CVPixelBufferPool::make(layout, mostPicturesOut);
        description_ = std::make_shared<CMFormatDescription>(
            CMFormatDescription{.mediaType = CMMediaType::video, .dimensions = format.size});
    }
    converter_ = std::move(converter);  // only now that there are pictures of its size
}

CMSampleBuffer PipeWirePictureIntake::convert(const AVVideoSourcePicture& picture, std::chrono::nanoseconds time) {
    CVPixelBufferRef image = pool_->take();
    if (!image) {
        report("A camera's pictures were dropped", "their receiver holds all that there are", 1);
        return {};
    }
    converter_->convert(picture, *image);
    constexpr std::int32_t nanoseconds = 1'000'000'000;
    return CMSampleBuffer::video(std::move(image), {.presentationTimeStamp = CMTime::make(time.count(), nanoseconds)},
                                 {}, description_);
}

void PipeWirePictureIntake::reportDrops(std::uint64_t count) noexcept {
    if (count > 0) {
        report("A camera's pictures were dropped", "they came faster than they were taken", count);
    }
}

/// A camera may send broken pictures thirty times in a second.
void PipeWirePictureIntake::report(std::string_view problem, std::string_view detail, std::uint64_t count) noexcept {
    unreported_ += count;
    if (lastReport_ != std::chrono::nanoseconds::min() && last_ - lastReport_ < betweenReports) {
        return;
    }
    lastReport_ = last_;
    Logger::forFile().warning(problem, [&] {
        return LogMetadata{{"error", std::string(detail)}, {"pictures", std::to_string(unreported_)}};
    });
    unreported_ = 0;
}

}  // namespace zorvane
