#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "X11FilterFixture.hpp"
#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"
#include "tests/Support/WaitUntil.hpp"

namespace zorvane {
namespace {

/// On the desktop that the tests run in, whose window manager puts windows into frames.
class X11FilterOnDesktop : public testing::Test {
  protected:
    static constexpr std::int32_t lowerProcess = 40001;
    static constexpr std::int32_t upperProcess = 40002;

    void SetUp() override {
        if (!std::getenv("DISPLAY")) {
            GTEST_SKIP() << "DISPLAY isn't set: run inside scripts/with-desktop";
        }
        lower_.emplace(lowerProcess);
        upper_.emplace(upperProcess);
        lowerWindow_ = lower_->makeManagedWindow({300, 200, 300, 200}, blue);
        const CGRect frame = frameOf(lowerWindow_);
        const auto x = static_cast<std::int16_t>(frame.origin.x);
        const auto y = static_cast<std::int16_t>(frame.origin.y);
        upperWindow_ = upper_->makeManagedWindow({x, y, 300, 200}, red);
        frameOf(upperWindow_);
        upper_->move(upperWindow_, x, y);
        inside_ = {x + 150, y + 120};
    }

    /// Once the window manager has put it on the screen.
    CGRect frameOf(std::uint32_t window) {
        CGRect frame;
        waitUntil([&] {
            const auto found = platform_.windowList->createDescriptionFromArray({window});
            frame = found.empty() ? CGRect() : found.front().bounds;
            return !found.empty() && found.front().isOnScreen && frame.size.height > 200;
        });
        return frame;
    }

    /// What a stream with this filter shows where both windows lie.
    void expectColor(std::uint32_t color, SCContentFilter filter) {
        filter.display = contentOf(*platform_.screenCapture).displays.at(0);
        const auto samples = std::make_shared<ScreenSamples>(std::vector<ScreenSamples::Point>{inside_});
        const auto stream = platform_.screenCapture->makeStream(filter, {.showsCursor = false}, samples);
        stream->addStreamOutput(samples, SCStreamOutputType::screen, queue_);
        ASSERT_EQ(codeOf(start(*stream)), 0);
        samples->waitForPixel(color);
        stop(*stream);
    }

    Platform platform_ = makeLinuxPlatform();
    DispatchQueue queue_ = DispatchQueue::serial("X11FilterOnDesktop");
    std::optional<X11TestProgram> lower_;
    std::optional<X11TestProgram> upper_;
    std::uint32_t lowerWindow_ = 0;
    std::uint32_t upperWindow_ = 0;
    ScreenSamples::Point inside_{};
};

TEST_F(X11FilterOnDesktop, AFramedWindowGoesByTheProgramInIt) {
    expectColor(red, {});
    expectColor(blue, {.applications = {{.processID = upperProcess}}});
    expectColor(blue, {.subject = SCWindow{.windowID = lowerWindow_,
                                           .owningApplication = SCRunningApplication{.processID = lowerProcess}}});
    expectColor(red, {.kind = SCContentFilterKind::includingWindows, .windows = {{.windowID = upperWindow_}}});
}

}  // namespace
}  // namespace zorvane
