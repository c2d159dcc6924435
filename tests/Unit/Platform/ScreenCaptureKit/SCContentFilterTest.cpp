#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"

#include <gtest/gtest.h>

namespace zorvane {
namespace {

SCWindow window(std::uint32_t windowID, std::optional<std::int32_t> processID) {
    SCWindow window{.windowID = windowID};
    if (processID) {
        window.owningApplication = SCRunningApplication{.processID = *processID};
    }
    return window;
}

struct Case {
    SCContentFilterKind kind;
    std::vector<std::uint32_t> shown;
};

// Windows 1 and 2 belong to the listed application, 3 to another one, 4 to nobody. Windows 2 and 3 are listed.
TEST(SCContentFilterTest, ListedWindowsAreTheExceptionsAmongApplications) {
    const std::vector<SCWindow> windows{window(1, 10), window(2, 10), window(3, 20), window(4, std::nullopt)};
    const Case cases[] = {
        {SCContentFilterKind::includingWindows, {2, 3}},
        {SCContentFilterKind::excludingWindows, {1, 4}},
        {SCContentFilterKind::includingApplications, {1, 3}},
        {SCContentFilterKind::excludingApplications, {2, 4}},
    };
    for (const Case& expected : cases) {
        const SCContentFilter filter{
            .kind = expected.kind, .applications = {{.processID = 10}}, .windows = {windows[1], windows[2]}};
        std::vector<std::uint32_t> shown;
        for (const SCWindow& candidate : windows) {
            if (filter.shows(candidate)) {
                shown.push_back(candidate.windowID);
            }
        }
        EXPECT_EQ(shown, expected.shown) << filter.debugDescription();
    }
}

TEST(SCContentFilterTest, AWindowCropShowsNoApplicationThatWasStartedLater) {
    const SCContentFilter crop{
        .applications = {{.processID = 20}}, .windows = {window(2, 10)}, .subject = window(1, 10)};
    EXPECT_TRUE(crop.shows(window(1, 10)));
    EXPECT_FALSE(crop.shows(window(2, 10))) << "the application's other windows are exceptions";
    EXPECT_TRUE(crop.shows(window(5, 10))) << "but not those it opens later, such as menus";
    EXPECT_FALSE(crop.shows(window(6, 20)));
    EXPECT_FALSE(crop.shows(window(7, 30)));
    EXPECT_FALSE(crop.shows(window(8, std::nullopt)));
    EXPECT_FALSE(crop.showsDesktop());
    EXPECT_FALSE((SCContentFilter{.subject = window(1, 10)}.showsEverything())) << "also when nobody else is there yet";

    const SCContentFilter ofNobody{.subject = window(1, std::nullopt)};
    EXPECT_TRUE(ofNobody.shows(window(1, std::nullopt)));
    EXPECT_FALSE(ofNobody.shows(window(2, std::nullopt))) << "two windows of nobody are not of one application";
}

}  // namespace
}  // namespace zorvane
