#include "tests/Desktop/X11/X11StreamFixture.hpp"

namespace zorvane {
namespace {

using Points = std::vector<ScreenSamples::Point>;

TEST_F(X11StreamTest, TheFirstPictureOfAStillScreenComesAtOnceAndShowsIt) {
    client_.fill({100, 50, 20, 10}, red);
    auto samples = std::make_shared<ScreenSamples>(Points{{99, 50}, {100, 50}, {119, 59}, {120, 59}, {100, 60}});
    auto stream = makeStream(samples);
    ASSERT_EQ(codeOf(start(*stream)), 0);

    const auto first = samples->waitForStatus(SCFrameStatus::complete);

    EXPECT_EQ(first.pixels, (std::vector<std::uint32_t>{0, red, red, 0, 0}));
    const CVPixelLayout layout{.width = 640, .height = 480, .bytesPerRow = 2560};
    EXPECT_EQ(first.layout, layout);
    EXPECT_EQ(codeOf(stop(*stream)), 0);
}

TEST_F(X11StreamTest, EveryPictureShowsAllChangesBeforeIt) {
    // Each change touches other rows, and pictures take turns: one that isn't brought up to date would show.
    auto samples = std::make_shared<ScreenSamples>(Points{{5, 5}, {5, 105}, {5, 205}, {5, 305}, {5, 405}});
    auto stream = makeStream(samples);
    ASSERT_EQ(codeOf(start(*stream)), 0);
    std::vector<std::uint32_t> expected(5, 0);

    for (std::uint32_t round = 1; round <= 40; ++round) {
        const std::size_t band = round * 2 % 5;
        expected[band] = round;
        client_.fill({0, static_cast<std::int16_t>(band * 100), 10, 10}, round);
        samples->hold(round % 3);  // so that now one picture, now another is used
        const auto shown = samples->waitForPixel(round, band);
        EXPECT_EQ(shown.pixels, expected) << "round " << round;
        samples->letGo();
        samples->forget();
    }
}

TEST_F(X11StreamTest, ACropOfOddSizeAndPlaceShowsExactlyThatPart) {
    client_.fill({101, 51, 33, 17}, green);
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}, {32, 0}, {32, 16}, {0, 16}});
    auto stream = makeStream(samples, {.showsCursor = false, .sourceRect = CGRect::make(101, 51, 33, 17)});
    ASSERT_EQ(codeOf(start(*stream)), 0);

    const auto first = samples->waitForStatus(SCFrameStatus::complete);

    EXPECT_EQ(first.layout.width, 33);
    EXPECT_EQ(first.layout.height, 17);
    EXPECT_EQ(first.pixels, std::vector<std::uint32_t>(4, green));
}

TEST_F(X11StreamTest, ACropThatReachesBeyondTheDisplayIsBlackThere) {
    client_.fill({0, 0, 640, 480}, white);
    auto samples = std::make_shared<ScreenSamples>(Points{{29, 30}, {30, 29}, {30, 30}, {99, 99}});
    auto stream = makeStream(samples, {.showsCursor = false, .sourceRect = CGRect::make(-30, -30, 100, 100)});
    ASSERT_EQ(codeOf(start(*stream)), 0);

    const auto first = samples->waitForStatus(SCFrameStatus::complete);
    EXPECT_EQ(first.pixels, (std::vector<std::uint32_t>{0, 0, white, white}));

    client_.fill({0, 0, 5, 5}, red);
    const auto second = samples->waitForPixel(red, 2);
    EXPECT_EQ(second.pixels, (std::vector<std::uint32_t>{0, 0, red, white}));
}

TEST_F(X11StreamTest, ChangesOutsideOfTheCropMakeNoPicture) {
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto stream = makeStream(samples, {.showsCursor = false, .sourceRect = CGRect::make(0, 0, 100, 100)});
    ASSERT_EQ(codeOf(start(*stream)), 0);
    samples->waitForStatus(SCFrameStatus::idle);

    for (int round = 0; round < 10; ++round) {
        client_.fill({200, 200, 100, 100}, round % 2 ? red : blue);
    }
    client_.fill({0, 0, 1, 1}, green);

    samples->waitForPixel(green);
    EXPECT_EQ(samples->count(SCFrameStatus::complete), 2U) << "the first picture and the one of the change inside";
}

TEST_F(X11StreamTest, TheCursorIsDrawnIntoPicturesWhenItIsAskedFor) {
    client_.setSquareCursor(8, green);
    client_.movePointer(300, 200);
    const Points points{{299, 200}, {300, 200}, {307, 207}, {308, 207}, {400, 100}};
    auto with = std::make_shared<ScreenSamples>(points);
    auto without = std::make_shared<ScreenSamples>(points);
    auto streamWith = makeStream(with, {.showsCursor = true});
    auto streamWithout = makeStream(without);
    ASSERT_EQ(codeOf(start(*streamWith)), 0);
    ASSERT_EQ(codeOf(start(*streamWithout)), 0);

    EXPECT_EQ(with->waitForStatus(SCFrameStatus::complete).pixels, (std::vector<std::uint32_t>{0, green, green, 0, 0}));
    EXPECT_EQ(without->waitForStatus(SCFrameStatus::complete).pixels, std::vector<std::uint32_t>(5, 0));

    client_.movePointer(400, 100);
    EXPECT_EQ(with->waitForPixel(green, 4).pixels, (std::vector<std::uint32_t>{0, 0, 0, 0, green}))
        << "no trace is left where the cursor was";
    client_.setSquareCursor(8, red);
    EXPECT_EQ(with->waitForPixel(red, 4).pixels, (std::vector<std::uint32_t>{0, 0, 0, 0, red}));
    client_.fill({0, 0, 1, 1}, blue);
    without->waitFor([](const ScreenSample& sample) { return sample.status == SCFrameStatus::idle; });
    EXPECT_EQ(stop(*streamWithout), nullptr);
    for (const ScreenSample& sample : without->all()) {
        EXPECT_TRUE(sample.pixels.empty() || sample.pixels[4] == 0);
    }
}

TEST_F(X11StreamTest, ACursorAtTheEdgeIsCutOff) {
    client_.setSquareCursor(8, green);
    client_.movePointer(636, 476);
    auto samples = std::make_shared<ScreenSamples>(Points{{635, 475}, {636, 476}, {639, 479}});
    auto stream = makeStream(samples, {.showsCursor = true});
    ASSERT_EQ(codeOf(start(*stream)), 0);

    EXPECT_EQ(samples->waitForStatus(SCFrameStatus::complete).pixels, (std::vector<std::uint32_t>{0, green, green}));
}

TEST_F(X11StreamTest, APointerThatMovesOutsideOfTheCropMakesNoPicture) {
    client_.setSquareCursor(8, green);
    client_.movePointer(300, 300);
    auto samples = std::make_shared<ScreenSamples>(Points{{50, 50}});
    auto stream = makeStream(samples, {.showsCursor = true, .sourceRect = CGRect::make(0, 0, 100, 100)});
    ASSERT_EQ(codeOf(start(*stream)), 0);
    samples->waitForStatus(SCFrameStatus::idle);

    client_.movePointer(400, 300);
    client_.movePointer(300, 400);
    client_.movePointer(50, 50);

    samples->waitForPixel(green);
    EXPECT_EQ(samples->count(SCFrameStatus::complete), 2U);
}

TEST_F(X11StreamTest, TwoStreamsAtOnceShowTheSameChanges) {
    auto whole = std::make_shared<ScreenSamples>(Points{{10, 10}});
    auto part = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto streamOfWhole = makeStream(whole);
    auto streamOfPart = makeStream(part, {.showsCursor = false, .sourceRect = CGRect::make(10, 10, 50, 50)});
    ASSERT_EQ(codeOf(start(*streamOfWhole)), 0);
    ASSERT_EQ(codeOf(start(*streamOfPart)), 0);

    for (const std::uint32_t color : {red, green, blue}) {
        client_.fill({0, 0, 100, 100}, color);
        whole->waitForPixel(color);
        part->waitForPixel(color);
    }
    EXPECT_EQ(codeOf(stop(*streamOfWhole)), 0);
    client_.fill({0, 0, 100, 100}, white);
    part->waitForPixel(white);
}

class X11DeepColorStreamTest : public X11StreamTest {
  protected:
    X11DeepColorStreamTest() : X11StreamTest("320x240x30") {}
};

TEST_F(X11DeepColorStreamTest, AScreenOfTenBitsGivesPicturesOfTenBits) {
    client_.setSquareCursor(8, 0xFF0000);
    client_.movePointer(100, 100);
    client_.fill({0, 0, 10, 10}, 0x3FD00001);
    auto samples = std::make_shared<ScreenSamples>(Points{{5, 5}, {100, 100}});
    auto stream = makeStream(samples, {.showsCursor = true});
    ASSERT_EQ(codeOf(start(*stream)), 0);

    const auto first = samples->waitForStatus(SCFrameStatus::complete);

    EXPECT_EQ(first.layout.format, CVPixelFormat::l10r);
    EXPECT_EQ(first.pixels, (std::vector<std::uint32_t>{0x3FD00001, 0x3FF00000}));
}

class X11ShallowStreamTest : public X11StreamTest {
  protected:
    X11ShallowStreamTest() : X11StreamTest("320x240x16") {}
};

TEST_F(X11ShallowStreamTest, AScreenOfSixteenBitsIsRefused) {
    auto stream = makeStream(std::make_shared<ScreenSamples>());
    EXPECT_EQ(codeOf(start(*stream)), static_cast<int>(SCStreamErrorCode::failedToStart));
}

TEST_F(X11StreamTest, ASecondDisplayIsCapturedWhereItLies) {
    client_.setMonitor("left", {0, 0, 400, 480}, true, true);
    client_.setMonitor("right", {400, 100, 240, 300}, false, false);
    client_.fill({400, 100, 240, 300}, green);
    client_.fill({500, 200, 1, 1}, red);
    const auto displays = contentOf(capture()).displays;
    ASSERT_EQ(displays.size(), 2U);
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}, {239, 299}, {100, 100}});
    auto stream = capture().makeStream({.display = displays[1]}, {.showsCursor = false}, samples);
    stream->addStreamOutput(samples, SCStreamOutputType::screen, queue_);
    ASSERT_EQ(codeOf(start(*stream)), 0);

    const auto first = samples->waitForStatus(SCFrameStatus::complete);
    EXPECT_EQ(first.layout.width, 240);
    EXPECT_EQ(first.layout.height, 300);
    EXPECT_EQ(first.pixels, (std::vector<std::uint32_t>{green, green, red}));
    client_.fill({500, 200, 1, 1}, blue);
    samples->waitForPixel(blue, 2);
}

class X11StreamWithoutSharedMemoryTest : public X11StreamTest {
  protected:
    X11StreamWithoutSharedMemoryTest() : X11StreamTest("640x480x24", "MIT-SHM") {}
};

TEST_F(X11StreamWithoutSharedMemoryTest, PicturesComeThroughTheConnection) {
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}, {639, 479}});
    auto stream = makeStream(samples);
    ASSERT_EQ(codeOf(start(*stream)), 0);
    for (const std::uint32_t color : {red, green, blue}) {
        client_.fill({639, 479, 1, 1}, color);
        EXPECT_EQ(samples->waitForPixel(color, 1).pixels, (std::vector<std::uint32_t>{0, color}));
    }
}

class X11StreamWithoutDamageTest : public X11StreamTest {
  protected:
    X11StreamWithoutDamageTest() : X11StreamTest("640x480x24", "DAMAGE") {}
};

TEST_F(X11StreamWithoutDamageTest, AServerWithoutDamageIsRefused) {
    auto stream = makeStream(std::make_shared<ScreenSamples>());
    EXPECT_EQ(codeOf(start(*stream)), static_cast<int>(SCStreamErrorCode::failedToStart));
}

}  // namespace
}  // namespace zorvane
