// What a virtual display shows: pixels, and a small painter for them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane {

/// A colour as nonlinear values from 0 to 1 in its colour space.
struct VirtualColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    CGColorSpaceName colorSpace = CGColorSpaceName::sRGB;

    /// The pixel in `format`: BGRA in sRGB, with what sRGB can't show clipped, or l10r in Display P3.
    std::uint32_t pixel(CVPixelFormat format) const;

    static constexpr VirtualColor black() { return {0, 0, 0}; }
    static constexpr VirtualColor white() { return {1, 1, 1}; }
    static constexpr VirtualColor gray(double level) { return {level, level, level}; }
};

/// A rectangle of pixels, origin at the top left.
struct VirtualPixelRect {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// A grid of pixels. A plain value: copying copies the pixels. What is painted outside is cut off.
///
/// A wide screen keeps every pixel twice, as BGRA in sRGB and as l10r in Display P3, so that each colour is converted
/// once, when it is painted.
class VirtualScreen {
  public:
    enum class Gamut : std::uint8_t { standard, wide };

    /// Black. `width` and `height` are pixels.
    VirtualScreen(std::int32_t width, std::int32_t height, Gamut gamut = Gamut::standard);

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    VirtualPixelRect bounds() const { return {0, 0, width_, height_}; }
    bool has(CVPixelFormat format) const { return !plane(format).empty(); }

    void fill(const VirtualColor& color) { fill(bounds(), color); }
    void fill(const VirtualPixelRect& rect, const VirtualColor& color);

    /// Writes `number` into the top left corner, readable with `readFrameCounter`.
    void drawFrameCounter(std::uint32_t number);

    /// A whole picture that differs for each `number`: a background, a bar that moves to the right, the counter.
    void drawTestPattern(std::uint32_t number);

    /// A row of pixels in a format that the screen has.
    const std::uint32_t* row(CVPixelFormat format, std::int32_t y) const {
        return plane(format).data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
    }

  private:
    const std::vector<std::uint32_t>& plane(CVPixelFormat format) const {
        return format == CVPixelFormat::bgra ? standard_ : wide_;
    }
    void fillPlane(std::vector<std::uint32_t>& plane, const VirtualPixelRect& visible, std::uint32_t pixel) const;

    std::int32_t width_;
    std::int32_t height_;
    std::vector<std::uint32_t> standard_;
    std::vector<std::uint32_t> wide_;  // empty on a standard screen
};

}  // namespace zorvane
