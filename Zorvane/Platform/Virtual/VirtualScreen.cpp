#include "Zorvane/Platform/Virtual/VirtualScreen.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "Zorvane/Platform/Virtual/VirtualFrameCounter.hpp"

namespace zorvane {
namespace {

using Channels = std::array<double, 3>;
using Matrix = std::array<Channels, 3>;

// Both spaces have the white point D65 and the same transfer function, so one matrix of linear light leads across.
constexpr Matrix sRGBToDisplayP3{
    {{0.8224620, 0.1775380, 0}, {0.0331942, 0.9668058, 0}, {0.0170826, 0.0723974, 0.9105200}}};
constexpr Matrix displayP3ToSRGB{
    {{1.2249402, -0.2249402, 0}, {-0.0420570, 1.0420570, 0}, {-0.0196376, -0.0786361, 1.0982737}}};

double linear(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double nonlinear(double light) {
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

Channels converted(const Channels& color, const Matrix& matrix) {
    const Channels light{linear(color[0]), linear(color[1]), linear(color[2])};
    Channels result{};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const Channels& weights = matrix[channel];
        result[channel] = nonlinear(weights[0] * light[0] + weights[1] * light[1] + weights[2] * light[2]);
    }
    return result;
}

std::uint32_t quantized(double value, std::uint32_t maximum) {
    return static_cast<std::uint32_t>(std::lround(std::clamp(value, 0.0, 1.0) * maximum));
}

VirtualPixelRect clipped(const VirtualPixelRect& rect, const VirtualPixelRect& bounds) {
    const std::int32_t left = std::max(rect.x, bounds.x);
    const std::int32_t top = std::max(rect.y, bounds.y);
    const std::int32_t right = std::min(rect.x + rect.width, bounds.x + bounds.width);
    const std::int32_t bottom = std::min(rect.y + rect.height, bounds.y + bounds.height);
    return {left, top, std::max(right - left, 0), std::max(bottom - top, 0)};
}

}  // namespace

std::uint32_t VirtualColor::pixel(CVPixelFormat format) const {
    const bool isBGRA = format == CVPixelFormat::bgra;
    const CGColorSpaceName target = isBGRA ? CGColorSpaceName::sRGB : CGColorSpaceName::displayP3;
    Channels channels{red, green, blue};
    if (colorSpace != target) {
        channels = converted(channels, isBGRA ? displayP3ToSRGB : sRGBToDisplayP3);
    }
    const std::uint32_t bits = isBGRA ? 8 : 10;
    const std::uint32_t maximum = (1u << bits) - 1;
    const std::uint32_t color = quantized(channels[0], maximum) << 2 * bits | quantized(channels[1], maximum) << bits |
                                quantized(channels[2], maximum);
    return isBGRA ? 0xFF000000u | color : color;
}

VirtualScreen::VirtualScreen(std::int32_t width, std::int32_t height, Gamut gamut) : width_(width), height_(height) {
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    standard_.assign(count, VirtualColor::black().pixel(CVPixelFormat::bgra));
    if (gamut == Gamut::wide) {
        wide_.assign(count, VirtualColor::black().pixel(CVPixelFormat::l10r));
    }
}

void VirtualScreen::fill(const VirtualPixelRect& rect, const VirtualColor& color) {
    const VirtualPixelRect visible = clipped(rect, bounds());
    fillPlane(standard_, visible, color.pixel(CVPixelFormat::bgra));
    if (!wide_.empty()) {
        fillPlane(wide_, visible, color.pixel(CVPixelFormat::l10r));
    }
}

void VirtualScreen::fillPlane(std::vector<std::uint32_t>& plane, const VirtualPixelRect& visible,
                              std::uint32_t pixel) const {
    for (std::int32_t y = visible.y; y < visible.y + visible.height; ++y) {
        std::fill_n(plane.begin() + std::ptrdiff_t{y} * width_ + visible.x, visible.width, pixel);
    }
}

void VirtualScreen::drawFrameCounter(std::uint32_t number) {
    forEachCounterCell(number, [this](const VirtualCounterCell& cell) {
        fill({cell.x, cell.y, VirtualCounterCell::size, VirtualCounterCell::size},
             cell.isWhite ? VirtualColor::white() : VirtualColor::black());
    });
}

void VirtualScreen::drawTestPattern(std::uint32_t number) {
    constexpr std::int32_t barWidth = 64;
    constexpr std::uint32_t step = 8;
    fill({0.10, 0.12, 0.18});
    const auto position = static_cast<std::int32_t>(std::uint64_t{number} * step % static_cast<std::uint64_t>(width_));
    fill({position, height_ / 4, barWidth, height_ / 2}, {0.95, 0.60, 0.10});
    drawFrameCounter(number);
}

}  // namespace zorvane
