#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

#include "tests/Desktop/X11/X11FilterFixture.hpp"

namespace zorvane {
namespace {

constexpr std::uint32_t black = 0;

TEST_F(X11FilterTest, WhatLiesBehindAnExcludedWindowShows) {
    plain_.makeWindow({0, 0, 200, 200}, green);
    secret_.makeWindow({100, 100, 200, 200}, red);
    plain_.makeWindow({250, 250, 100, 100}, blue);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}, {150, 150}, {220, 220}, {260, 260}, {340, 340}});
    auto stream = startStream(samples, withoutSecret());

    const auto first = samples->waitForStatus(SCFrameStatus::complete);

    EXPECT_EQ(first.pixels, (std::vector<std::uint32_t>{green, green, grey, blue, blue}));
}

TEST_F(X11FilterTest, WhatHappensInAnExcludedWindowMakesNoPicture) {
    plain_.makeWindow({0, 0, 640, 480}, green);
    const auto secret = secret_.makeWindow({0, 0, 100, 100}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}});
    auto stream = startStream(samples, withoutSecret());
    samples->waitForStatus(SCFrameStatus::idle);
    const auto before = samples->all().size();
    for (std::uint32_t color = 0; color < 400; ++color) {
        secret_.fill(secret, {0, 0, 100, 100}, color);
    }
    plain_.makeWindow({0, 0, 640, 480}, blue);
    samples->waitForPixel(blue);
    EXPECT_EQ(samples->all().size(), before + 1);
}

TEST_F(X11FilterTest, AnExcludedWindowThatMovesIsInNoPicture) {
    const auto back = plain_.makeWindow({0, 0, 640, 480}, green);
    const auto secret = secret_.makeWindow({0, 0, 100, 100}, red);
    Points points;
    for (std::int32_t place = 0; place < 480; place += 20) {
        points.push_back({place, place});
    }
    auto samples = std::make_shared<ScreenSamples>(points);
    auto stream = startStream(samples, withoutSecret());

    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(2200);
    for (std::int16_t step = 0; std::chrono::steady_clock::now() < end; ++step) {
        const auto place = static_cast<std::int16_t>(step % 400);
        secret_.move(secret, place, place);
        plain_.fill(back, {0, 479, 1, 1}, static_cast<std::uint32_t>(step));
    }
    plain_.fill(back, {0, 0, 10, 10}, blue);
    samples->waitForPixel(blue, 0);

    EXPECT_GE(samples->count(SCFrameStatus::complete), 50U);
    EXPECT_EQ(countPixels(*samples, red), 0U);
    EXPECT_EQ(countPixels(*samples, green) + countPixels(*samples, blue),
              points.size() * samples->count(SCFrameStatus::complete));
}

TEST_F(X11FilterTest, WindowsThatAreOpenedLaterAreFilteredToo) {
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}, {250, 50}});
    auto stream = startStream(samples, withoutSecret());
    samples->waitForStatus(SCFrameStatus::complete);

    secret_.makeWindow({0, 0, 100, 100}, red);
    plain_.makeWindow({200, 0, 100, 100}, green);
    samples->waitForPixel(green, 1);
    plain_.makeWindow({0, 0, 100, 100}, blue);
    secret_.makeWindow({0, 0, 640, 480}, red);

    EXPECT_EQ(samples->waitForPixel(blue, 0).pixels, (std::vector<std::uint32_t>{blue, green}));
    EXPECT_EQ(countPixels(*samples, red), 0U);
}

TEST_F(X11FilterTest, AWindowThatNamesNoProcessBelongsToTheOneThatMadeIt) {
    X11TestProgram silent;
    silent.makeWindow({0, 0, 100, 100}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}});
    SCContentFilter withoutThisProcess = filter();
    withoutThisProcess.applications = {{.processID = getpid()}};
    auto stream = startStream(samples, withoutThisProcess);

    EXPECT_EQ(samples->waitForStatus(SCFrameStatus::complete).pixels, std::vector<std::uint32_t>{grey});
    const auto windows = contentOf(capture()).windows;
    ASSERT_EQ(windows.size(), 1U);
    EXPECT_EQ(windows[0].owningApplication->processID, getpid()) << "so that the filter's maker sees it the same way";
}

TEST_F(X11FilterTest, MovesRestackingAndHidingAreFollowed) {
    const auto lower = plain_.makeWindow({0, 0, 100, 100}, green);
    const auto upper = plain_.makeWindow({50, 0, 100, 100}, blue);
    secret_.makeWindow({0, 0, 640, 480}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{25, 50}, {75, 50}, {125, 50}, {425, 50}});
    auto stream = startStream(samples, withoutSecret());
    using Pixels = std::vector<std::uint32_t>;
    const auto expect = [&](const Pixels& pixels) {
        samples->waitFor([&](const ScreenSample& sample) { return sample.pixels == pixels; });
        samples->forget();
    };
    expect({green, blue, blue, grey});
    plain_.raise(lower);
    expect({green, green, blue, grey});
    plain_.lower(lower);
    expect({green, blue, blue, grey});
    plain_.move(upper, 400, 0);
    expect({green, green, grey, blue});
    plain_.hide(lower);
    expect({grey, grey, grey, blue});
    plain_.show(lower);
    expect({green, green, grey, blue});
    plain_.resize(lower, 150, 100);
    expect({green, green, green, blue});
    plain_.close(upper);
    expect({green, green, green, grey});
}

TEST_F(X11FilterTest, AWindowCropShowsNothingOfTheWindowsOverIt) {
    const auto target = plain_.makeWindow({100, 100, 200, 200}, green);
    secret_.makeWindow({150, 150, 300, 300}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}, {100, 100}, {199, 199}});
    const SCStreamConfiguration crop{.showsCursor = false, .sourceRect = CGRect::make(100, 100, 200, 200)};
    auto stream = startStream(samples, cropTo(target, plainProcess), crop);
    EXPECT_EQ(samples->waitForPixel(green, 2).pixels, (std::vector<std::uint32_t>{green, green, green}));

    X11TestProgram later(40003);
    later.makeWindow({0, 0, 640, 480}, red);
    plain_.makeWindow({190, 190, 20, 20}, blue);  // as a menu is
    EXPECT_EQ(samples->waitForPixel(blue, 1).pixels, (std::vector<std::uint32_t>{green, blue, green}));
    plain_.move(target, 150, 150);
    EXPECT_EQ(samples->waitForPixel(black, 0).pixels, (std::vector<std::uint32_t>{black, blue, green}))
        << "the crop stays where it is, and behind its program's windows is nothing";
    plain_.hide(target);
    EXPECT_EQ(samples->waitForPixel(black, 2).pixels, (std::vector<std::uint32_t>{black, blue, black}));
    EXPECT_EQ(countPixels(*samples, red), 0U);
}

TEST_F(X11FilterTest, OnlyIncludedWindowsShowOnBlack) {
    const auto one = plain_.makeWindow({0, 0, 100, 100}, green);
    plain_.makeWindow({50, 0, 100, 100}, blue);
    auto samples = std::make_shared<ScreenSamples>(Points{{25, 50}, {75, 50}, {125, 50}});
    SCContentFilter only = filter();
    only.kind = SCContentFilterKind::includingWindows;
    only.windows = {{.windowID = one}};
    auto stream = startStream(samples, only);
    EXPECT_EQ(samples->waitForStatus(SCFrameStatus::complete).pixels,
              (std::vector<std::uint32_t>{green, green, black}));
}

TEST_F(X11FilterTest, AWindowManagersFrameGoesWithItsWindow) {
    X11TestProgram manager(40004);
    const auto secretWindow = secret_.makeWindow({0, 0, 80, 80}, red);
    const auto plainWindow = plain_.makeWindow({200, 0, 80, 80}, green);
    manager.frame(secretWindow, {0, 0, 100, 100}, 10, white);
    manager.frame(plainWindow, {200, 0, 100, 100}, 10, white);
    auto samples = std::make_shared<ScreenSamples>(Points{{5, 5}, {50, 50}, {205, 5}, {250, 50}, {405, 5}, {450, 50}});
    auto stream = startStream(samples, withoutSecret());
    using Pixels = std::vector<std::uint32_t>;
    EXPECT_EQ(samples->waitForStatus(SCFrameStatus::complete).pixels, (Pixels{grey, grey, white, green, grey, grey}));

    const auto laterSecret = secret_.makeWindow({400, 0, 80, 80}, red);
    manager.frame(laterSecret, {400, 0, 100, 100}, 10, blue);
    const auto laterPlain = plain_.makeWindow({0, 0, 80, 80}, green);
    manager.frame(laterPlain, {0, 0, 100, 100}, 10, white);
    const auto last = samples->waitFor([](const ScreenSample& sample) {
        return sample.pixels.size() > 1 && sample.pixels[0] == white && sample.pixels[1] == green;
    });
    EXPECT_EQ(last.pixels, (Pixels{white, green, white, green, grey, grey}));
    EXPECT_EQ(countPixels(*samples, red) + countPixels(*samples, blue), 0U);
}

TEST_F(X11FilterTest, ShapedWindowsAndBordersKeepTheirForm) {
    const auto shaped = plain_.makeWindow({0, 0, 100, 100}, green);
    plain_.cut(shaped, {0, 0, 100, 50});
    plain_.makeWindow({200, 0, 100, 100}, blue, 10);
    secret_.makeWindow({0, 0, 640, 480}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 25}, {50, 75}, {205, 5}, {315, 115}, {325, 125}});
    auto stream = startStream(samples, withoutSecret());
    using Pixels = std::vector<std::uint32_t>;
    EXPECT_EQ(samples->waitForStatus(SCFrameStatus::complete).pixels, (Pixels{green, grey, blue, blue, grey}));

    plain_.cut(shaped, {0, 50, 100, 50});
    EXPECT_EQ(samples->waitForPixel(green, 1).pixels, (Pixels{grey, green, blue, blue, grey}));
}

TEST_F(X11FilterTest, TranslucentWindowsLetThroughWhatIsShownBehindThem) {
    plain_.makeWindow({0, 0, 100, 100}, 0x0000FF);
    secret_.makeWindow({0, 0, 200, 200}, red);
    plain_.makeTranslucentWindow({0, 0, 100, 100}, 0x80800000);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}});
    auto stream = startStream(samples, withoutSecret());
    const std::uint32_t mixed = samples->waitForStatus(SCFrameStatus::complete).pixels.at(0);
    EXPECT_NEAR(mixed >> 16, 0x80, 1);
    EXPECT_EQ(mixed >> 8 & 0xFF, 0U);
    EXPECT_NEAR(mixed & 0xFF, 0x7F, 1);
}

TEST_F(X11FilterTest, TheBackgroundIsFollowedAsProgramsSetIt) {
    secret_.makeWindow({0, 0, 640, 480}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}, {639, 479}});
    auto stream = startStream(samples, withoutSecret());
    EXPECT_EQ(samples->waitForStatus(SCFrameStatus::complete).pixels, (std::vector<std::uint32_t>{grey, grey}));
    plain_.setBackgroundPicture(blue);
    EXPECT_EQ(samples->waitForPixel(blue, 0).pixels, (std::vector<std::uint32_t>{blue, blue}));
}

TEST_F(X11FilterTest, ANewWindowThatHasNotPaintedShowsNothingOfAnExcludedOne) {
    secret_.makeWindow({0, 0, 640, 480}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}, {150, 50}, {250, 50}});
    auto stream = startStream(samples, withoutSecret());
    samples->waitForStatus(SCFrameStatus::idle);

    const auto window = plain_.makeUnpaintedWindow({0, 0, 100, 100});
    samples->waitForPixel(black, 0);
    while (!plain_.wasAskedToPaint(window)) {
        std::this_thread::yield();
    }
    plain_.fill(window, {0, 0, 100, 100}, green);
    samples->waitForPixel(green, 0);
    plain_.resize(window, 200, 100);
    samples->waitForPixel(black, 1);
    secret_.makeWindow({0, 0, 300, 300}, red);
    plain_.raise(window);
    plain_.resize(window, 300, 100);
    samples->waitForPixel(black, 2);
    while (!plain_.wasAskedToPaint(window)) {
        std::this_thread::yield();
    }
    for (std::int16_t x = 0; x < 300; ++x) {
        plain_.fill(window, {x, 0, 1, 100}, blue);
    }
    samples->waitFor([](const ScreenSample& sample) {
        return sample.pixels == std::vector<std::uint32_t>{blue, blue, blue};
    });
    EXPECT_EQ(countPixels(*samples, red), 0U);
}

TEST_F(X11FilterTest, AStillFilteredScreenSaysIdleOnceAndThenNothing) {
    plain_.makeWindow({0, 0, 100, 100}, green);
    secret_.makeWindow({0, 0, 640, 480}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}});
    auto stream = startStream(samples, withoutSecret());
    samples->waitForStatus(SCFrameStatus::idle);
    samples->forget();
    plain_.makeWindow({300, 0, 10, 10}, blue);
    samples->waitForStatus(SCFrameStatus::idle);
    EXPECT_LE(samples->count(SCFrameStatus::complete), 2U) << "the window's appearance and its painting";
}

}  // namespace
}  // namespace zorvane
