#include "Zorvane/Platform/Linux/X11/WindowIcon.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace zorvane {
namespace {

using Numbers = std::vector<std::uint32_t>;

TEST(WindowIcon, TheLargestWholePictureIsTaken) {
    const Numbers value{1, 1, 0xFF000000, 2, 1, 0x80010203, 0x00FFFFFF, 1, 1, 0xFFFFFFFF};
    const NSImage expected{.width = 2, .height = 1, .pixels = {1, 2, 3, 0x80, 255, 255, 255, 0}};
    EXPECT_EQ(largestWindowIcon(value), expected);
    Numbers cutOff = value;
    cutOff.insert(cutOff.end(), {3, 3, 1, 2, 3});
    EXPECT_EQ(largestWindowIcon(cutOff), expected);
}

TEST(WindowIcon, NonsenseIsNoPicture) {
    EXPECT_FALSE(largestWindowIcon(Numbers{}));
    EXPECT_FALSE(largestWindowIcon(Numbers{1}));
    EXPECT_FALSE(largestWindowIcon(Numbers{1, 1}));
    EXPECT_FALSE(largestWindowIcon(Numbers{0, 0, 1, 1, 1}));
    EXPECT_FALSE(largestWindowIcon(Numbers{0xFFFFFFFF, 0xFFFFFFFF, 1}));
    EXPECT_FALSE(largestWindowIcon(Numbers{0x10000, 0x10000, 1}));
    Numbers huge(2 + 513);
    huge[0] = 513;
    huge[1] = 1;
    EXPECT_FALSE(largestWindowIcon(huge));
}

}  // namespace
}  // namespace zorvane
