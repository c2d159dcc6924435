#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "DisplayRecordingFixture.hpp"
#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "tests/Support/PrivateWindowManager.hpp"
#include "tests/Support/WaitUntil.hpp"

namespace zorvane {
namespace {

class TopWindowRecordingTest : public testing::DisplayRecordingTest {
  protected:
    /// A window whose frame the window manager has put on the screen, in front of all others.
    std::uint32_t openWindow(const std::string& title) {
        const auto window = client_.makeManagedWindow({0, 0, 200, 150}, title, "Tester");
        waitUntil([&] { return front() == window && frameOf(window).size.height > 150; });
        return window;
    }
    static std::uint32_t front() {
        const auto windows = Platform::current()->windowList->create(CGWindowListOption::all, kCGNullWindowID);
        return windows ? windows->front() : 0;
    }
    static CGRect frameOf(std::uint32_t window) {
        const auto found = Platform::current()->windowList->createDescriptionFromArray({window});
        return found.empty() ? CGRect() : found.front().bounds;
    }
    static std::vector<ZVWindowInfo> read(const std::filesystem::path& file) {
        std::vector<ZVWindowInfo> windows;
        for (const ZVWindowPresence& presence : ZVWindowPresence::read(file)) {
            windows.push_back(std::get<ZVWindowInfo>(presence.payload()));
        }
        return windows;
    }

    const PrivateWindowManager windowManager_;
};

TEST_F(TopWindowRecordingTest, TheSideFileFollowsASwitchOfWindowsAndADrag) {
    constexpr int steps = 30;
    const auto dragged = openWindow("dragged");
    const auto second = openWindow("second \"\xE7\xAA\x93\"\n");
    const auto display =
        ZVRecorder::SchemaItem::_display(ZVDisplay::displays().at(0)->id(), {.showsCursor = false},
                                         /*topWindowInfo=*/true, ZVScreenRecordingOutputOptions::singleFile());
    ZVRecorder recorder({display}, directory_.path() / "bundle");
    begin(recorder);
    client_.askWindowManager(dragged, "_NET_ACTIVE_WINDOW", 2);
    waitUntil([&] { return front() == dragged; });
    pass(0.5);
    std::vector<double> requestTimes;
    for (int step = 1; step <= steps; ++step) {
        requestTimes.push_back(hostTimeClockTime().seconds());
        client_.moveWindow(dragged, static_cast<std::int16_t>(20 + 10 * step), 40);
        pass(0.016);
    }
    const CGRect place = frameOf(dragged);
    const auto result = recorder.stop().get();

    ASSERT_EQ(result.bundleInfo.files.size(), 2U);
    EXPECT_EQ(result.bundleInfo.files.at(1).type, ZVBundleInfo::FileAssetType::topWindow);
    const auto windows = read(result.bundleURL / result.bundleInfo.files.at(1).filename);
    ASSERT_GT(windows.size(), 10U) << "a drag is followed more closely than the list of windows";
    EXPECT_EQ(windows.front().time.seconds(), 0);
    EXPECT_EQ(windows.front().windowID, second);
    EXPECT_EQ(windows.front().windowTitle, "second \"\xE7\xAA\x93\"\n");
    EXPECT_EQ(windows.front().applicationName, "Tester");
    EXPECT_NEAR(windows.back().time.seconds(), lengthOf(recorder), 1e-6);
    EXPECT_EQ(windows.back().windowID, dragged);
    EXPECT_EQ(windows.back().x, place.origin.x / 640);
    EXPECT_EQ(windows.back().width, place.size.width / 640);
    EXPECT_EQ(windows.back().height, place.size.height / 480);
    const double recordFrom = recorder.statistics().recordFrom;
    const auto beforeDrag = std::ranges::find(windows, dragged, &ZVWindowInfo::windowID);
    double lastX = 0;
    for (auto entry = beforeDrag + 1; entry != windows.end() - 1; ++entry) {
        EXPECT_GT(entry->x, std::exchange(lastX, entry->x));
        const auto step = static_cast<std::size_t>((entry->x * 640 - place.origin.x) / 10 + steps - 1);
        EXPECT_GT(recordFrom + entry->time.seconds(), requestTimes.at(step)) << "no place is known before its time";
    }
}

}  // namespace
}  // namespace zorvane
