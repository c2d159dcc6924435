// From the pixels of a screen to the samples of a video: BT.709 matrix, limited range, 4:2:0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane {

/// Where a picture's luma, Cb and Cr samples lie. The chroma planes have half the size of the luma plane, rounded up. A
/// sample of 8 bits takes one byte; one of 10 bits two, little-endian, in the lower bits. The memory is the maker's.
struct PlanarPicture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t bitDepth = 8;
    std::array<std::byte*, 3> planes{};
    std::array<std::ptrdiff_t, 3> bytesPerRow{};
};

/// What pixels are converted from and to.
struct ColorConversion {
    CVPixelFormat format = CVPixelFormat::bgra;
    CGColorSpaceName colorSpace = CGColorSpaceName::sRGB;
    AVVideoColorPrimaries primaries = AVVideoColorPrimaries::ituR709_2;
    std::int32_t bitDepth = 8;  ///< 8 or 10
    bool operator==(const ColorConversion&) const = default;
};

/// Converts pictures of one kind. A sample is within one level of the exact result
///
///     Y  = black + (white - black) * Y'             Y' = 0.2126 R + 0.7152 G + 0.0722 B
///     Cb = middle + range * (B - Y') / 1.8556       Cr = middle + range * (R - Y') / 1.5748
///
/// where R, G, B are the pixel's values from 0 to 1, for chroma the mean of a block of two by two (of what there is of
/// it at an odd edge), and 8 bits have black 16, white 235, middle 128, range 224; 10 bits four times that. The
/// transfer function is left alone: screens and players treat that of sRGB and that of BT.709 alike. Where the
/// primaries of the pixels and of the video differ, colours are moved in linear light, and clipped where the video
/// can't show them.
///
/// Used by one thread at a time. Converting allocates nothing.
class ColorConverter {
  public:
    explicit ColorConverter(const ColorConversion& conversion);
    ~ColorConverter();
    ColorConverter(const ColorConverter&) = delete;
    ColorConverter& operator=(const ColorConverter&) = delete;

    const ColorConversion& conversion() const { return conversion_; }

    /// Precondition: the picture has the format of the conversion, and the size of the destination, which has its bit
    /// depth.
    void convert(const CVPixelBuffer& picture, const PlanarPicture& destination) const;

  private:
    struct Matrix;
    class GamutMap;

    static std::unique_ptr<const GamutMap> makeGamutMap(const ColorConversion& conversion);
    static std::unique_ptr<const Matrix> makeMatrix(const ColorConversion& conversion, bool isMapped);

    const ColorConversion conversion_;
    const std::unique_ptr<const GamutMap> gamutMap_;  // null where the primaries are the same
    const std::unique_ptr<const Matrix> matrix_;
};

}  // namespace zorvane
