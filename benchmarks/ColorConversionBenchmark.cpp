// The conversion of one 1920x1080 picture on one thread. In the plain case (8 bits, no change of primaries) it must not
// take more than twice the time of libyuv's BT.601 conversion of the same picture, which runs beside it.
#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <cstring>
#include <vector>

#include "Zorvane/Platform/FFmpeg/ColorConversion.hpp"

namespace zorvane {
namespace {

constexpr std::int32_t width = 1920;
constexpr std::int32_t height = 1080;

enum class Content { noise, rectangles };

/// A picture of noise, where nothing is to be gained from equal neighbours, or of rectangles of 64 by 32 pixels with a
/// line of noise every 16 rows, which stands for text.
CVPixelBufferRef makePicture(Content content) {
    const auto pool = CVPixelBufferPool::make({width, height, width * 4, CVPixelFormat::bgra}, 1);
    CVPixelBufferRef picture = pool->take();
    std::uint32_t random = 1;
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            random = random * 1664525 + 1013904223;
            const bool isFlat = content == Content::rectangles && y % 16 != 0;
            const std::uint32_t pixel = isFlat ? static_cast<std::uint32_t>(x / 64 * 7919 + y / 32 * 104729) : random;
            std::memcpy(picture->mutableBytes() + (static_cast<std::size_t>(width * y + x)) * 4, &pixel, sizeof(pixel));
        }
    }
    return picture;
}

struct Planes {
    explicit Planes(std::int32_t bitDepth) : memory(std::size_t{width} * height * 3) {
        const std::ptrdiff_t sampleSize = bitDepth == 8 ? 1 : 2;
        picture = {width, height, bitDepth, {}, {width * sampleSize, width / 2 * sampleSize, width / 2 * sampleSize}};
        picture.planes[0] = memory.data();
        picture.planes[1] = picture.planes[0] + picture.bytesPerRow[0] * height;
        picture.planes[2] = picture.planes[1] + picture.bytesPerRow[1] * (height / 2);
    }

    std::vector<std::byte> memory;
    PlanarPicture picture;
};

void convert(benchmark::State& state, const ColorConversion& conversion, Content content) {
    const CVPixelBufferRef picture = makePicture(content);
    const Planes planes(conversion.bitDepth);
    const ColorConverter converter(conversion);
    for (auto iteration : state) {
        converter.convert(*picture, planes.picture);
        benchmark::ClobberMemory();
    }
}

void BM_LibyuvBT601(benchmark::State& state) {
    const CVPixelBufferRef picture = makePicture(Content::noise);
    const Planes planes(8);
    const auto plane = [&planes](std::size_t index) {
        return reinterpret_cast<std::uint8_t*>(planes.picture.planes[index]);
    };
    for (auto iteration : state) {
        libyuv::ARGBToI420(reinterpret_cast<const std::uint8_t*>(picture->bytes()), width * 4, plane(0), width,
                           plane(1), width / 2, plane(2), width / 2, width, height);
        benchmark::ClobberMemory();
    }
}

void BM_PlainBT709(benchmark::State& state) {
    convert(state, {}, Content::noise);
}

void BM_WideFromStandardScreen(benchmark::State& state) {
    convert(state, {.primaries = AVVideoColorPrimaries::p3D65, .bitDepth = 10}, Content::rectangles);
}

BENCHMARK(BM_LibyuvBT601)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlainBT709)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WideFromStandardScreen)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zorvane
