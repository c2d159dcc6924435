#include "Zorvane/Platform/Virtual/VirtualScreen.hpp"

#include <gtest/gtest.h>

#include <cstring>

#include "Zorvane/Platform/Virtual/VirtualFrameCounter.hpp"
#include "Zorvane/Platform/Virtual/VirtualScene.hpp"

namespace zorvane {
namespace {

constexpr VirtualColor red{1, 0, 0};

CVPixelBufferRef emptyPicture(std::int32_t width, std::int32_t height, CVPixelFormat format = CVPixelFormat::bgra) {
    CVPixelLayout layout{.width = width, .height = height, .bytesPerRow = std::size_t(width) * 4, .format = format};
    return CVPixelBufferPool::make(layout, 1)->take();
}

std::uint32_t pixelAt(const CVPixelBuffer& picture, std::int32_t x, std::int32_t y) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, picture.bytes() + std::size_t(y) * picture.layout().bytesPerRow + std::size_t(x) * 4, 4);
    return pixel;
}

/// A scene with one display of 400 by 300 points at `scale`.
VirtualScene scene(std::optional<std::uint32_t> scale = 1,
                   VirtualScreen::Gamut gamut = VirtualScreen::Gamut::standard) {
    VirtualScene scene;
    scene.put({.displayID = 7, .frame = CGRect::make(1000, 100, 400, 300), .scale = scale, .gamut = gamut});
    return scene;
}

VirtualWindow window(std::uint32_t windowID, std::int32_t processID, const CGRect& frame, const VirtualColor& color) {
    return {{.windowID = windowID,
             .frame = frame,
             .isOnScreen = true,
             .owningApplication = SCRunningApplication{.processID = processID}},
            color};
}

CVPixelBufferRef drawn(const VirtualScene& scene, const SCContentFilter& filter,
                       const SCStreamConfiguration& configuration) {
    CVPixelBufferRef picture = emptyPicture(configuration.width, configuration.height, configuration.pixelFormat);
    scene.draw(scene.panels.front(), filter, configuration, *picture);
    return picture;
}

std::uint32_t bgra(const VirtualColor& color) {
    return color.pixel(CVPixelFormat::bgra);
}

TEST(VirtualScreenTest, ColorsAreConvertedBetweenTheirSpaces) {
    const VirtualColor p3Red{1, 0, 0, CGColorSpaceName::displayP3};
    EXPECT_EQ(red.pixel(CVPixelFormat::bgra), 0xFFFF0000u);
    // The sRGB red in Display P3 is (0.9175, 0.2003, 0.1386).
    EXPECT_EQ(red.pixel(CVPixelFormat::l10r), 939u << 20 | 205u << 10 | 142u);
    EXPECT_EQ(p3Red.pixel(CVPixelFormat::l10r), 1023u << 20);
    EXPECT_EQ(p3Red.pixel(CVPixelFormat::bgra), 0xFFFF0000u) << "out of gamut, clipped";
    EXPECT_EQ(VirtualColor::white().pixel(CVPixelFormat::l10r), 0x3FFFFFFFu);
}

TEST(VirtualScreenTest, ThePictureCarriesAFrameNumberThatCanBeReadBack) {
    const auto scale = 1;
    for (const CVPixelFormat format : {CVPixelFormat::bgra, CVPixelFormat::l10r}) {
        VirtualScene world = scene(scale, VirtualScreen::Gamut::wide);
        for (const std::uint32_t number : {0u, 1u, 0xA5A5F00Fu, 0xFFFFFFFFu}) {
            world.panels.front().screen.drawTestPattern(number);
            const auto picture = drawn(world, {}, {.width = 400, .height = 300, .pixelFormat = format});
            EXPECT_EQ(readFrameCounter(picture->bytes(), picture->layout()), number);
        }
        world.panels.front().screen.fill(red);
        const auto picture = drawn(world, {}, {.width = 400, .height = 300, .pixelFormat = format});
        EXPECT_EQ(readFrameCounter(picture->bytes(), picture->layout()), std::nullopt);
    }
}

TEST(VirtualScreenTest, WhatIsPaintedOutsideIsCutOff) {
    VirtualScreen screen(10, 10);
    screen.fill({-5, -5, 6, 6}, red);
    screen.fill({9, 9, 100, 100}, red);
    screen.fill({20, 20, 5, 5}, red);
    EXPECT_EQ(screen.row(CVPixelFormat::bgra, 0)[0], bgra(red));
    EXPECT_EQ(screen.row(CVPixelFormat::bgra, 0)[1], bgra(VirtualColor::black()));
    EXPECT_EQ(screen.row(CVPixelFormat::bgra, 9)[9], bgra(red));
}

TEST(VirtualSceneTest, ACropIsReadAtThePixelSizeOfAScaledDisplay) {
    VirtualScene world = scene(2);
    world.panels.front().screen.fill({201, 101, 1, 1}, red);
    SCStreamConfiguration configuration{.sourceRect = CGRect::make(100, 50, 20, 10), .width = 40, .height = 20};
    EXPECT_EQ(pixelAt(*drawn(world, {}, configuration), 1, 1), bgra(red));
    EXPECT_EQ(pixelAt(*drawn(world, {}, configuration), 2, 1), bgra(VirtualColor::black()));

    configuration = {.sourceRect = CGRect::make(100, 50, 20, 10), .width = 20, .height = 10};  // every other pixel
    EXPECT_EQ(pixelAt(*drawn(world, {}, configuration), 0, 0), bgra(red));
}

TEST(VirtualSceneTest, WhatACropShowsBeyondTheDisplayIsBlack) {
    VirtualScene world = scene();
    world.panels.front().screen.fill(red);
    const CGRect beyond = CGRect::make(390, 290, 20, 20);
    for (const std::int32_t size : {20, 10}) {
        const auto picture = drawn(world, {}, {.sourceRect = beyond, .width = size, .height = size});
        EXPECT_EQ(pixelAt(*picture, 0, 0), bgra(red));
        EXPECT_EQ(pixelAt(*picture, size - 1, 0), bgra(VirtualColor::black()));
        EXPECT_EQ(pixelAt(*picture, 0, size - 1), bgra(VirtualColor::black()));
    }
    const auto before = drawn(world, {}, {.sourceRect = CGRect::make(-10, 0, 20, 20), .width = 20, .height = 20});
    EXPECT_EQ(pixelAt(*before, 9, 0), bgra(VirtualColor::black()));
    EXPECT_EQ(pixelAt(*before, 10, 0), bgra(red));
}

TEST(VirtualSceneTest, WindowsAndPointerLieAboveTheScreenAsTheFilterSays) {
    constexpr VirtualColor green{0, 1, 0};
    constexpr VirtualColor blue{0, 0, 1};
    VirtualScene world = scene();
    world.panels.front().screen.fill(red);
    world.windows = {window(1, 10, CGRect::make(1000, 100, 100, 100), green),
                     window(2, 20, CGRect::make(1050, 100, 100, 100), blue)};
    world.pointer = CGPoint{1200, 200};
    const SCStreamConfiguration whole{.showsCursor = false, .width = 400, .height = 300};

    const auto all = drawn(world, {}, whole);
    EXPECT_EQ(pixelAt(*all, 75, 50), bgra(green)) << "the front window covers the other one";
    EXPECT_EQ(pixelAt(*all, 125, 50), bgra(blue));
    EXPECT_EQ(pixelAt(*all, 205, 105), bgra(red)) << "the pointer is hidden";

    const SCContentFilter without{.applications = {{.processID = 10}}};
    EXPECT_EQ(pixelAt(*drawn(world, without, whole), 75, 50), bgra(blue));
    EXPECT_EQ(pixelAt(*drawn(world, without, whole), 25, 50), bgra(red));

    const SCContentFilter only{.kind = SCContentFilterKind::includingWindows, .windows = {world.windows[1].window}};
    EXPECT_EQ(pixelAt(*drawn(world, only, whole), 125, 50), bgra(blue));
    EXPECT_EQ(pixelAt(*drawn(world, only, whole), 300, 200), bgra(VirtualColor::black()));

    const auto withPointer = drawn(world, {}, {.width = 400, .height = 300});
    EXPECT_EQ(pixelAt(*withPointer, 200, 100), bgra(VirtualColor::black()));
    EXPECT_EQ(pixelAt(*withPointer, 205, 105), bgra(VirtualColor::white()));
}

}  // namespace
}  // namespace zorvane
