#include <thread>

#include "tests/Desktop/X11/X11FilterFixture.hpp"

namespace zorvane {
namespace {

TEST_F(X11FilterTest, WindowsThatComeAndGoAtAnyMomentDoNoHarm) {
    Points points;
    for (std::int32_t x = 5; x < 640; x += 50) {
        points.push_back({x, x * 3 / 4});
    }
    const auto back = plain_.makeWindow({0, 0, 640, 480}, green);
    auto samples = std::make_shared<ScreenSamples>(points);
    auto stream =
        startStream(samples, withoutSecret(), {.showsCursor = false, .minimumFrameInterval = CMTime::make(1, 1000)});
    const auto trouble = [](const std::stop_token& stop, std::int32_t process, std::uint32_t color) {
        X11TestProgram program(process);
        for (std::int16_t round = 0; !stop.stop_requested(); round = static_cast<std::int16_t>((round + 7) % 400)) {
            const auto painted = program.makeWindow({round, round, 100, 100}, color);
            const auto unpainted = program.makeUnpaintedWindow({round, 0, 200, 300});
            program.resize(painted, 200, 50);
            program.lower(unpainted);
            program.hide(painted);
            program.show(painted);
            program.cut(painted, {10, 10, 20, 20});
            program.close(unpainted);
            program.close(painted);
        }
    };
    {
        std::jthread secrets(trouble, secretProcess, red);
        std::jthread others(trouble, plainProcess, blue);
        while (samples->count(SCFrameStatus::complete) < 300) {
            std::this_thread::yield();
        }
    }
    samples->forget();
    plain_.raise(back);
    plain_.fill(back, {0, 0, 640, 480}, white);
    samples->waitForPixel(white);
    EXPECT_EQ(countPixels(*samples, red), 0U);
    EXPECT_EQ(codeOf(stop(*stream)), 0);
}

TEST_F(X11FilterTest, UnderACompositorTheSameIsShown) {
    plain_.makeWindow({0, 0, 200, 200}, green);
    plain_.setBackgroundPicture(grey);
    X11TestProgram compositor;
    compositor.takeAllWindows();
    secret_.makeWindow({0, 0, 640, 480}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}, {300, 300}});
    auto stream = startStream(samples, withoutSecret());
    EXPECT_EQ(samples->waitForStatus(SCFrameStatus::complete).pixels, (std::vector<std::uint32_t>{green, grey}));
    plain_.makeWindow({250, 250, 100, 100}, blue);
    EXPECT_EQ(samples->waitForPixel(blue, 1).pixels, (std::vector<std::uint32_t>{green, blue}));
}

TEST_F(X11FilterTest, ACompositorThatStartsLaterShowsNothingOfAnExcludedWindow) {
    plain_.makeWindow({0, 0, 200, 200}, green);
    secret_.makeWindow({0, 0, 640, 480}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}, {300, 300}});
    auto stream = startStream(samples, withoutSecret());
    samples->waitForPixel(green);
    X11TestProgram compositor;
    compositor.makeOverlay();
    plain_.makeWindow({250, 250, 100, 100}, blue);
    EXPECT_EQ(samples->waitForPixel(blue, 1).pixels, (std::vector<std::uint32_t>{green, blue}));
    EXPECT_EQ(countPixels(*samples, red), 0U);
}

TEST_F(X11FilterTest, AFrameGoesByAllWindowsInItWheneverTheyCome) {
    X11TestProgram manager(40004);
    using Kind = X11TestProgram::FrameKind;
    const auto framed = secret_.makeWindow({0, 0, 100, 100}, red);
    manager.frame(framed, {0, 0, 100, 100}, 0, white, Kind::ordinary);
    const auto first = plain_.makeWindow({200, 0, 100, 100}, green);
    const auto tabs = manager.frame(first, {200, 0, 100, 100}, 0, white, Kind::ordinary);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}, {250, 50}});
    auto stream = startStream(samples, withoutSecret());
    EXPECT_EQ(samples->waitForStatus(SCFrameStatus::complete).pixels, (std::vector<std::uint32_t>{grey, green}));

    const auto second = secret_.makeWindow({400, 0, 100, 100}, red);
    manager.addToFrame(second, tabs);
    samples->waitForPixel(grey, 1);
    const auto elsewhere = manager.makeWindow({0, 200, 100, 100}, white);
    manager.addToFrame(second, elsewhere);
    EXPECT_EQ(samples->waitForPixel(green, 1).pixels, (std::vector<std::uint32_t>{grey, green}));
    EXPECT_EQ(countPixels(*samples, red), 0U);
}

TEST_F(X11FilterTest, AWindowThatNamesItsOwnerLateIsLeftOutFromThenOn) {
    X11TestProgram program(40005);
    const auto window = program.makeWindow({0, 0, 100, 100}, green);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}});
    auto stream = startStream(samples, withoutSecret());
    samples->waitForPixel(green);
    program.nameOwner(window, secretProcess);
    program.fill(window, {0, 0, 100, 100}, red);
    samples->waitForPixel(grey);
    program.nameOwner(window, plainProcess);
    samples->waitForPixel(red);
}

TEST_F(X11FilterTest, TwoFilteredStreamsAtOnceShowWhatEachIsToShow) {
    const auto plainWindow = plain_.makeWindow({0, 0, 200, 200}, green);
    const auto secretWindow = secret_.makeWindow({0, 0, 200, 200}, red);
    auto withoutRed = std::make_shared<ScreenSamples>(Points{{50, 50}});
    auto onlyRed = std::make_shared<ScreenSamples>(Points{{50, 50}});
    auto one = startStream(withoutRed, withoutSecret());
    auto other = startStream(onlyRed, cropTo(secretWindow, secretProcess));
    withoutRed->waitForPixel(green);
    onlyRed->waitForPixel(red);

    EXPECT_EQ(codeOf(stop(*one)), 0);
    plain_.fill(plainWindow, {0, 0, 200, 200}, blue);
    secret_.fill(secretWindow, {0, 0, 200, 200}, white);
    onlyRed->waitForPixel(white);
    EXPECT_EQ(countPixels(*onlyRed, blue) + countPixels(*onlyRed, green), 0U);
}

TEST_F(X11FilterTest, NothingIsLeftOnTheServerAfterAStop) {
    const auto window = plain_.makeWindow({0, 0, 100, 100}, green);
    ASSERT_FALSE(plain_.hasOwnPixmap(window));
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}});
    auto stream = startStream(samples, withoutSecret());
    samples->waitForPixel(green);
    EXPECT_TRUE(plain_.hasOwnPixmap(window));
    EXPECT_EQ(codeOf(stop(*stream)), 0);
    while (plain_.hasOwnPixmap(window)) {
        std::this_thread::yield();  // the server notices the end in its own time; ctest ends a test that hangs
    }
    EXPECT_EQ(contentOf(capture()).windows.size(), 1U);
}

class X11FilterWithoutCompositeTest : public X11FilterTest {
  protected:
    X11FilterWithoutCompositeTest() : X11FilterTest("Composite") {}
};

TEST_F(X11FilterWithoutCompositeTest, AServerThatCannotComposeRefusesAFilterAndStillCapturesWithoutOne) {
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto filtered = capture().makeStream(withoutSecret(), {.showsCursor = false}, samples);
    filtered->addStreamOutput(samples, SCStreamOutputType::screen, queue_);
    EXPECT_EQ(codeOf(start(*filtered)), static_cast<int>(SCStreamErrorCode::failedToStart));
    auto whole = startStream(samples, filter());
    samples->waitForStatus(SCFrameStatus::complete);
}

class X11FilterWithoutSharedMemoryTest : public X11FilterTest {
  protected:
    X11FilterWithoutSharedMemoryTest() : X11FilterTest("MIT-SHM") {}
};

TEST_F(X11FilterWithoutSharedMemoryTest, ACropBeyondTheDisplayIsBlackThere) {
    plain_.makeWindow({0, 0, 640, 480}, green);
    secret_.makeWindow({0, 0, 640, 480}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{29, 30}, {30, 29}, {30, 30}, {99, 99}});
    auto stream =
        startStream(samples, withoutSecret(), {.showsCursor = false, .sourceRect = CGRect::make(-30, -30, 100, 100)});
    EXPECT_EQ(samples->waitForStatus(SCFrameStatus::complete).pixels, (std::vector<std::uint32_t>{0, 0, green, green}));
}

}  // namespace
}  // namespace zorvane
