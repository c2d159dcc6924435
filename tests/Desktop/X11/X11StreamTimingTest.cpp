#include <algorithm>

#include "tests/Desktop/X11/X11StreamFixture.hpp"

namespace zorvane {
namespace {

using Points = std::vector<ScreenSamples::Point>;

double seconds(std::chrono::nanoseconds time) {
    return static_cast<double>(time.count()) / 1e9;
}

std::vector<double> pictureTimes(const ScreenSamples& samples) {
    std::vector<double> times;
    for (const ScreenSample& sample : samples.all()) {
        if (sample.status == SCFrameStatus::complete) {
            times.push_back(sample.seconds);
        }
    }
    return times;
}

TEST_F(X11StreamTest, AFlashIsStampedWithTheTimeAtWhichItShowed) {
    auto samples = std::make_shared<ScreenSamples>(Points{{320, 240}});
    auto stream = makeStream(samples);
    ASSERT_EQ(codeOf(start(*stream)), 0);
    std::vector<double> errors;

    for (std::uint32_t flash = 1; flash <= 25; ++flash) {
        samples->waitForStatus(SCFrameStatus::idle);
        samples->forget();
        const double shown = seconds(client_.fill({0, 0, 640, 480}, flash));
        errors.push_back(samples->waitForPixel(flash).seconds - shown);
    }

    std::sort(errors.begin(), errors.end());
    EXPECT_GT(errors.front(), 0) << "a picture can't be older than what it shows";
    EXPECT_LT(errors[errors.size() / 2], 0.003);
}

TEST_F(X11StreamTest, ABurstOfChangesKeepsTheFrameInterval) {
    constexpr double interval = 0.05;
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto stream = makeStream(samples, {.showsCursor = false, .minimumFrameInterval = CMTime::make(1, 20)});
    ASSERT_EQ(codeOf(start(*stream)), 0);
    samples->waitForStatus(SCFrameStatus::idle);
    samples->forget();

    const double begin = seconds(std::chrono::steady_clock::now().time_since_epoch());
    std::uint32_t value = 0;
    double now = begin;
    while (now < begin + 1) {
        now = seconds(client_.fill({0, 0, 100, 100}, ++value));
    }
    samples->waitForPixel(value);

    const auto times = pictureTimes(*samples);
    EXPECT_LE(times.size(), static_cast<std::size_t>((now - begin) / interval) + 3);
    for (std::size_t index = 1; index < times.size(); ++index) {
        EXPECT_GT(times[index] - times[index - 1], interval / 2) << "picture " << index;
    }
}

TEST_F(X11StreamTest, AStillScreenSaysSoOnce) {
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    auto stream = makeStream(samples);
    ASSERT_EQ(codeOf(start(*stream)), 0);
    samples->waitForStatus(SCFrameStatus::idle);
    samples->forget();

    client_.fill({0, 0, 1, 1}, red);
    const auto picture = samples->waitForPixel(red);
    const auto idle = samples->waitForStatus(SCFrameStatus::idle);
    EXPECT_GE(idle.seconds - picture.seconds, 0.1);
    samples->forget();
    client_.fill({0, 0, 1, 1}, blue);
    samples->waitForPixel(blue);
    EXPECT_EQ(samples->count(SCFrameStatus::idle), 0U) << "no second notice before the next change";
}

TEST_F(X11StreamTest, WhenAllPicturesAreInUseTheNewestStateFollowsLater) {
    constexpr std::size_t depth = 3;
    auto samples = std::make_shared<ScreenSamples>(Points{{0, 0}});
    samples->hold(depth);
    auto stream = makeStream(samples, {.showsCursor = false, .queueDepth = depth});
    ASSERT_EQ(codeOf(start(*stream)), 0);
    samples->waitForStatus(SCFrameStatus::complete);
    for (std::uint32_t value = 1; value < depth; ++value) {
        client_.fill({0, 0, 1, 1}, value);
        samples->waitForPixel(value);
    }
    samples->forget();

    client_.fill({0, 0, 1, 1}, red);
    client_.fill({0, 0, 1, 1}, green);
    EXPECT_EQ(pixelAt(*samples->held(), 0, 0), depth - 1) << "a picture in use is left alone";
    EXPECT_EQ(samples->count(SCFrameStatus::complete), 0U);
    samples->letGo();

    samples->waitForPixel(green);
    EXPECT_EQ(samples->count(SCFrameStatus::complete), 1U);
}

}  // namespace
}  // namespace zorvane
