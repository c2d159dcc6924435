// Makes pictures for tests.
#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane::testing {

/// Red, green and blue on the scale of the pixel format: up to 255, or up to 1023.
using PixelColor = std::array<std::uint32_t, 3>;

/// A picture of its own pool.
CVPixelBufferRef makePicture(const CVPixelLayout& layout, const std::function<PixelColor(int x, int y)>& colorAt);

/// A '420v' picture of its own pool, of samples Y, Cb, Cr; of chroma, those at even places are asked for.
CVPixelBufferRef makeVideoPicture(const CVPixelLayout& layout,
                                  const std::function<std::array<std::uint8_t, 3>(int x, int y)>& samplesAt);

/// A BGRA picture of one grey.
CVPixelBufferRef makeGreyPicture(std::int32_t width, std::int32_t height, std::uint32_t level);

/// Of '420v', with rows as short as they may be.
CVPixelLayout videoLayout(std::int32_t width, std::int32_t height);
CVPixelLayout bgraLayout(std::int32_t width, std::int32_t height);
CVPixelLayout l10rLayout(std::int32_t width, std::int32_t height, CGColorSpaceName colorSpace);

/// A sample that shows `picture` at `time`.
CMSampleBuffer sampleAt(CMTime time, const CVPixelBufferRef& picture);
/// The same in seconds, exact to the nanosecond.
CMSampleBuffer sampleAt(double seconds, const CVPixelBufferRef& picture);

}  // namespace zorvane::testing
