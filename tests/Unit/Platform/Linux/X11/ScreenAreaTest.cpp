#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace zorvane {
namespace {

const CGRect display = CGRect::make(1920, 100, 1000, 800);

TEST(ScreenArea, WithoutACropItIsTheWholeDisplay) {
    const auto area = ScreenArea::of(display, std::nullopt).value();
    EXPECT_EQ(area.width, 1000);
    EXPECT_EQ(area.height, 800);
    EXPECT_EQ(area.visible, (PixelRect{0, 0, 1000, 800}));
    EXPECT_EQ(area.originX, 1920);
    EXPECT_EQ(area.originY, 100);
}

TEST(ScreenArea, ACropCountsInWholePixels) {
    const auto area = ScreenArea::of(display, CGRect::make(10.7, 20.2, 333.9, 17.9)).value();
    EXPECT_EQ(area.originX, 1930);
    EXPECT_EQ(area.originY, 120);
    EXPECT_EQ(area.width, 333);
    EXPECT_EQ(area.height, 17);
}

TEST(ScreenArea, ACropBeyondTheDisplayKeepsItsSize) {
    const auto area = ScreenArea::of(display, CGRect::make(-10.5, 700, 100, 200)).value();
    EXPECT_EQ(area.originX, 1909);
    EXPECT_EQ(area.width, 100);
    EXPECT_EQ(area.height, 200);
    EXPECT_EQ(area.visible, (PixelRect{11, 0, 89, 100}));
}

TEST(ScreenArea, NothingIsLeftOfACropElsewhereOrWithoutAPixel) {
    constexpr double huge = std::numeric_limits<double>::max();
    for (const CGRect& crop : {CGRect::make(1000, 0, 10, 10), CGRect::make(-10, 0, 10, 10), CGRect::make(0, 0, 0.9, 10),
                               CGRect::make(0, 0, -5, -5), CGRect::make(huge, huge, huge, huge), CGRect::null()}) {
        EXPECT_FALSE(ScreenArea::of(display, crop)) << debugDescription(crop);
    }
}

TEST(ScreenArea, RectanglesOfTheRootWindowAreToldInThePicture) {
    const auto area = ScreenArea::of(display, CGRect::make(100, 100, 50, 50)).value();
    EXPECT_EQ(area.fromRoot({2000, 180, 40, 40}), (PixelRect{0, 0, 20, 20}));
    EXPECT_TRUE(area.fromRoot({0, 0, 2020, 1000}).isEmpty()) << "they only touch";
}

TEST(RowSpan, JoinsToTheSmallestSpanThatHoldsBoth) {
    EXPECT_EQ((RowSpan{3, 5}.joinedWith({10, 12})), (RowSpan{3, 12}));
    EXPECT_EQ((RowSpan{}.joinedWith({10, 12})), (RowSpan{10, 12})) << "an empty one adds nothing";
    EXPECT_EQ((RowSpan{10, 12}.joinedWith({})), (RowSpan{10, 12}));
}

}  // namespace
}  // namespace zorvane
