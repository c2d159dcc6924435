#include "Zorvane/Internal/Recorders/ScreenContentFilter.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace zorvane {
namespace {

const std::vector<SCDisplay> sideBySide{{.displayID = 1, .frame = CGRect::make(0, 0, 1000, 800)},
                                        {.displayID = 2, .frame = CGRect::make(1000, 0, 1000, 800)}};

TEST(ResolvedContentFilter, TellsItsAreaInGlobalCoordinates) {
    ResolvedContentFilter resolved;
    resolved.display = sideBySide[1];
    EXPECT_EQ(resolved.globalCrop(), sideBySide[1].frame);
    resolved.cropRect = CGRect::make(10, 20, 30, 40);
    EXPECT_EQ(resolved.globalCrop(), CGRect::make(1010, 20, 30, 40));
}

}  // namespace
}  // namespace zorvane
