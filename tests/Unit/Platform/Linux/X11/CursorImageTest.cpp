#include "Zorvane/Platform/Linux/X11/CursorImage.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace zorvane {
namespace {

constexpr std::int32_t side = 4;

/// The pixels of a 4 by 4 picture that was `under` all over, with a 2 by 2 cursor of `over` at (x, y).
std::vector<std::uint32_t> drawn(std::uint32_t under, std::uint32_t over, std::int32_t x, std::int32_t y,
                                 CVPixelFormat format = CVPixelFormat::bgra, PixelRect clip = {0, 0, side, side}) {
    const auto pool =
        CVPixelBufferPool::make({.width = side, .height = side, .bytesPerRow = 4 * side, .format = format}, 1);
    const auto picture = pool->take();
    std::vector<std::uint32_t> pixels(side * side, under);
    std::memcpy(picture->mutableBytes(), pixels.data(), sizeof under * pixels.size());
    const std::vector<std::uint32_t> cursor(4, over);
    drawCursor({.pixels = cursor, .width = 2, .height = 2}, x, y, clip, *picture);
    std::memcpy(pixels.data(), picture->bytes(), sizeof under * pixels.size());
    return pixels;
}

std::uint32_t blended(std::uint32_t under, std::uint32_t over, CVPixelFormat format = CVPixelFormat::bgra) {
    return drawn(under, over, 0, 0, format)[0];
}

TEST(CursorImage, LiesWhereItIsPutAndIsCutOffAtTheClip) {
    constexpr std::uint32_t on = 0x010203;
    const auto cursorCount = [&](const std::vector<std::uint32_t>& pixels) {
        return std::count(pixels.begin(), pixels.end(), on);
    };
    const auto inside = drawn(0, 0xFF000000 | on, 1, 2);
    EXPECT_EQ(cursorCount(inside), 4);
    EXPECT_EQ(inside[2 * side + 1], on);
    EXPECT_EQ(inside[3 * side + 2], on);
    EXPECT_EQ(drawn(0, 0xFF000000 | on, -1, -1)[0], on);
    EXPECT_EQ(cursorCount(drawn(0, 0xFF000000 | on, -1, -1)), 1);
    EXPECT_EQ(cursorCount(drawn(0, 0xFF000000 | on, 3, 1)), 2);
    EXPECT_EQ(cursorCount(drawn(0, 0xFF000000 | on, 7, 7)), 0);
    EXPECT_EQ(cursorCount(drawn(0, 0xFF000000 | on, 1, 1, CVPixelFormat::bgra, {2, 0, 1, side})), 2);
}

TEST(CursorImage, MixesWithWhatIsBelow) {
    EXPECT_EQ(blended(0x336699, 0x00000000), 0x336699U) << "clear";
    EXPECT_EQ(blended(0x336699, 0xFFAABBCC), 0xAABBCCU) << "solid";
    EXPECT_EQ(blended(0xFFFFFF, 0x80000000), 0x7F7F7FU) << "a half shadow";
    EXPECT_EQ(blended(0x000000, 0x80808080), 0x808080U) << "colours are multiplied by alpha already";
    EXPECT_EQ(blended(0xF0F0F0, 0x00FFFFFF), 0xFFFFFFU) << "light that only adds doesn't wrap";
}

TEST(CursorImage, FillsTheRangeOfTenBits) {
    EXPECT_EQ(blended(0, 0xFFFF0000, CVPixelFormat::l10r), 0x3FF00000U);
    EXPECT_EQ(blended(0, 0xFFFFFFFF, CVPixelFormat::l10r), 0x3FFFFFFFU);
    EXPECT_EQ(blended(0x3FFFFFFF, 0x80000000, CVPixelFormat::l10r), 509U << 20 | 509U << 10 | 509U);
}

}  // namespace
}  // namespace zorvane
