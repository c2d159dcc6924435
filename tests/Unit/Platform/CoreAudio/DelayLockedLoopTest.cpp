#include "Zorvane/Platform/CoreAudio/DelayLockedLoop.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

namespace zorvane::testing {
namespace {

/// A source of 48 kHz that begins at 1000 s, and a loop that sees each block's time with some jitter.
class Listening {
  public:
    explicit Listening(unsigned seed = 1) : random_(seed) { loop.lock(position, reported()); }

    void listen(double seconds) {
        constexpr std::int64_t blockSize = 480;
        for (const double end = trueTime + seconds; trueTime < end;) {
            position += blockSize;
            trueTime += blockSize / (48000 * (1 + deviation));
            loop.observe(position, reported());
        }
    }

    double error() const { return loop.hostSeconds(position) - trueTime; }

    double deviation = 0;
    double jitter = 0;
    std::int64_t position = 12345;
    double trueTime = 1000;
    DelayLockedLoop loop{48000};

  private:
    std::chrono::nanoseconds reported() {
        const double error = std::uniform_real_distribution(-jitter, jitter)(random_);
        return std::chrono::nanoseconds(std::llround((trueTime + error) * 1e9));
    }

    std::minstd_rand random_;
};

TEST(DelayLockedLoopTest, FindsPlaceAndRateAmongJitterWithinSeconds) {
    double worstEarly = 0;
    double worstLate = 0;
    double worstRate = 0;
    for (unsigned seed = 1; seed <= 100; ++seed) {
        Listening source(seed);
        source.jitter = 0.003;
        source.deviation = seed % 2 == 0 ? 0.0002 : -0.0002;
        source.listen(2);
        worstEarly = std::max(worstEarly, std::abs(source.error()));
        source.listen(28);
        worstLate = std::max(worstLate, std::abs(source.error()));
        worstRate = std::max(worstRate, std::abs(source.loop.rateDeviation() - source.deviation));
    }
    EXPECT_LT(worstEarly, 0.001);
    EXPECT_LT(worstLate, 0.0003);
    EXPECT_LT(worstRate, 30e-6);
    RecordProperty("after_2_s_us", std::to_string(worstEarly * 1e6));
    RecordProperty("after_30_s_us", std::to_string(worstLate * 1e6));
    RecordProperty("rate_ppm", std::to_string(worstRate * 1e6));
}

TEST(DelayLockedLoopTest, FollowsAClockThatChangesItsRate) {
    Listening source;
    source.listen(60);
    source.deviation = 0.0001;
    double worst = 0;
    for (int second = 0; second < 60; ++second) {
        source.listen(1);
        worst = std::max(worst, std::abs(source.error()));
    }
    EXPECT_LT(worst, 0.001);
    EXPECT_LT(std::abs(source.error()), 0.00001);
    EXPECT_NEAR(source.loop.rateDeviation(), 0.0001, 1e-6);
}

}  // namespace
}  // namespace zorvane::testing
