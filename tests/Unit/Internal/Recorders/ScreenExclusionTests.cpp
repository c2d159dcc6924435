#include "Zorvane/Internal/Recorders/ScreenExclusion.hpp"

#include <gmock/gmock.h>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Platform/Foundation/NSProcessInfo.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Exclude = ZVScreenRecordingExcludeOptions;

class ScreenExclusionTest : public testing::VirtualWorldTest {
  protected:
    static SCRunningApplication application(std::int32_t processID, const char* bundleIdentifier) {
        return {processID, bundleIdentifier, "Application"};
    }
    static VirtualWindow window(std::uint32_t id, std::optional<SCRunningApplication> owner,
                                std::optional<std::string> title) {
        VirtualWindow window;
        window.window.windowID = id;
        window.window.frame = CGRect::make(0, 0, 10, 10);
        window.window.title = std::move(title);
        window.window.isOnScreen = true;
        window.window.owningApplication = std::move(owner);
        return window;
    }

    const SCRunningApplication controlCenter = application(30, "com.apple.controlcenter");
    const SCRunningApplication editor = application(40, "org.editor");
};

TEST_F(ScreenExclusionTest, ExcludesNothingUnlessToldTo) {
    const DisplayFilterOptions options = displayFilterOptions({});
    EXPECT_EQ(options.kind, SCContentFilterKind::excludingApplications);
    EXPECT_THAT(options.processIDs, IsEmpty());
    EXPECT_THAT(options.windowIDs, IsEmpty());
    EXPECT_THAT(displayFilterOptions({Exclude::currentProcess}).processIDs, ElementsAre(processIdentifier()));
}

TEST_F(ScreenExclusionTest, FindsTheIndicatorByItsOwnerAndItsTitle) {
    desktop->now()
        .setApplications({editor, controlCenter, application(50, "com.apple.controlcenter")})
        .setWindows({window(1, controlCenter, "AudioVideoModule"), window(2, controlCenter, "Clock"),
                     window(3, controlCenter, std::nullopt), window(4, editor, "AudioVideoModule"),
                     window(5, std::nullopt, "AudioVideoModule"), window(6, controlCenter, "AudioVideoModule")});
    const DisplayFilterOptions options = displayFilterOptions({Exclude::screenRecordingIndicator});
    EXPECT_THAT(options.windowIDs, ElementsAre(1U, 6U));
    EXPECT_THAT(options.processIDs, IsEmpty());
}

TEST_F(ScreenExclusionTest, KnowsNoIndicatorWhereNoApplicationShowsOne) {
    desktop->now().setApplications({editor}).setWindows(
        {window(4, editor, "AudioVideoModule"), window(5, std::nullopt, "AudioVideoModule")});
    EXPECT_THAT(displayFilterOptions({Exclude::screenRecordingIndicator}).windowIDs, IsEmpty());
}

TEST_F(ScreenExclusionTest, AnIndicatorOfAnExcludedProcessIsNoExceptionFromThat) {
    const SCRunningApplication self = application(processIdentifier(), "com.apple.controlcenter");
    desktop->now().setApplications({self}).setWindows({window(1, self, "AudioVideoModule")});
    const DisplayFilterOptions options =
        displayFilterOptions({Exclude::currentProcess, Exclude::screenRecordingIndicator});
    EXPECT_THAT(options.processIDs, ElementsAre(processIdentifier()));
    EXPECT_THAT(options.windowIDs, IsEmpty());
}

}  // namespace
}  // namespace zorvane
