#include "tests/Support/PictureSource.hpp"

#include <cstring>

namespace zorvane::testing {

CVPixelBufferRef makePicture(const CVPixelLayout& layout, const std::function<PixelColor(int x, int y)>& colorAt) {
    CVPixelBufferRef picture = CVPixelBufferPool::make(layout, 1)->take();
    const bool isDeep = layout.format == CVPixelFormat::l10r;
    for (int y = 0; y < layout.height; ++y) {
        for (int x = 0; x < layout.width; ++x) {
            const auto [red, green, blue] = colorAt(x, y);
            const std::uint32_t pixel =
                isDeep ? red << 20 | green << 10 | blue : 0xff000000 | red << 16 | green << 8 | blue;
            std::memcpy(picture->mutableBytes() + layout.bytesPerRow * static_cast<std::size_t>(y) + std::size_t(x) * 4,
                        &pixel, sizeof(pixel));
        }
    }
    return picture;
}

CVPixelBufferRef makeVideoPicture(const CVPixelLayout& layout,
                                  const std::function<std::array<std::uint8_t, 3>(int x, int y)>& samplesAt) {
    CVPixelBufferRef picture = CVPixelBufferPool::make(layout, 1)->take();
    auto* const luma = reinterpret_cast<std::uint8_t*>(picture->mutableBytes());
    for (int y = 0; y < layout.height; ++y) {
        std::uint8_t* const row = luma + layout.bytesPerRow * static_cast<std::size_t>(y);
        std::uint8_t* const chroma =
            luma + layout.chromaOffset() + layout.bytesPerRow * static_cast<std::size_t>(y / 2);
        for (int x = 0; x < layout.width; ++x) {
            const auto [value, cb, cr] = samplesAt(x, y);
            row[x] = value;
            if (x % 2 == 0 && y % 2 == 0) {
                chroma[x] = cb;
                chroma[x + 1] = cr;
            }
        }
    }
    return picture;
}

CVPixelBufferRef makeGreyPicture(std::int32_t width, std::int32_t height, std::uint32_t level) {
    return makePicture(bgraLayout(width, height), [level](int, int) { return PixelColor{level, level, level}; });
}

CVPixelLayout videoLayout(std::int32_t width, std::int32_t height) {
    return {width, height, static_cast<std::size_t>(width + width % 2), CVPixelFormat::yCbCr420VideoRange,
            CGColorSpaceName::sRGB};
}

CVPixelLayout bgraLayout(std::int32_t width, std::int32_t height) {
    return {width, height, static_cast<std::size_t>(width) * 4, CVPixelFormat::bgra, CGColorSpaceName::sRGB};
}

CVPixelLayout l10rLayout(std::int32_t width, std::int32_t height, CGColorSpaceName colorSpace) {
    return {width, height, static_cast<std::size_t>(width) * 4, CVPixelFormat::l10r, colorSpace};
}

CMSampleBuffer sampleAt(CMTime time, const CVPixelBufferRef& picture) {
    return CMSampleBuffer::video(picture, {kCMTimeInvalid, time, kCMTimeInvalid}, {});
}

CMSampleBuffer sampleAt(double seconds, const CVPixelBufferRef& picture) {
    return sampleAt(CMTime::fromSeconds(seconds, 1'000'000'000), picture);
}

}  // namespace zorvane::testing
