#include "Zorvane/Internal/CGInterop/DisplayContaining.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "Zorvane/Platform/ScreenCaptureKit/SCShareableContent.hpp"

namespace zorvane {
namespace {

const std::vector<SCDisplay> sideBySide{{.displayID = 1, .frame = CGRect::make(0, 0, 1000, 800)},
                                        {.displayID = 2, .frame = CGRect::make(1000, 0, 1000, 800)}};

std::uint32_t displayIDContaining(const CGRect& rect) {
    const SCDisplay* display = displayContaining(sideBySide, &SCDisplay::frame, rect);
    return display ? display->displayID : 0;
}

TEST(DisplayContaining, PicksTheDisplayThatHoldsMostOfTheRectangle) {
    EXPECT_EQ(displayIDContaining(CGRect::make(100, 100, 200, 200)), 1u);
    EXPECT_EQ(displayIDContaining(CGRect::make(900, 0, 300, 100)), 2u);
    EXPECT_EQ(displayIDContaining(CGRect::make(-500, -500, 600, 600)), 1u);
}

TEST(DisplayContaining, PicksTheFirstOfDisplaysThatHoldAsMuch) {
    EXPECT_EQ(displayIDContaining(CGRect::make(900, 0, 200, 100)), 1u);
}

TEST(DisplayContaining, FindsNoDisplayForWhatLiesOutsideOrOnlyTouches) {
    EXPECT_EQ(displayIDContaining(CGRect::make(5000, 5000, 10, 10)), 0u);
    EXPECT_EQ(displayIDContaining(CGRect::make(2000, 0, 10, 10)), 0u);
    EXPECT_EQ(displayIDContaining(CGRect::make(100, 100, 0, 0)), 0u) << "a rectangle without an area";
    EXPECT_EQ(displayContaining(std::vector<SCDisplay>(), &SCDisplay::frame, CGRect::make(0, 0, 10, 10)), nullptr);
}

}  // namespace
}  // namespace zorvane
