// Turns a window white and plays a beep at the same moments, and tells a line for each: the seconds on CLOCK_MONOTONIC
// at which the beep's first frame is heard, those before the request to the X server was sent, and those after the
// server had carried it out. The pauses differ, so that the moments fall on every phase of a recorder's rhythm.
//
//     flash_beep_client [--moments N] [--pause SECONDS]
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

#include "SoundClock.hpp"
#include "TestWindow.hpp"

namespace {

using namespace zorvane::benchmarks;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr std::uint16_t side = 256;
constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t black = 0;
constexpr auto beepLength = milliseconds(60);
constexpr auto flashLength = milliseconds(90);
constexpr double pitch = 2000;  // Hz

std::vector<nanoseconds> chooseMoments(int count, double pause) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> next(pause, pause + 0.2);
    std::vector<nanoseconds> moments;
    nanoseconds moment = Clock::now().time_since_epoch() + std::chrono::seconds(1);
    for (int index = 0; index < count; ++index) {
        moments.push_back(moment);
        moment += nanoseconds(std::llround(next(random) * 1e9));
    }
    return moments;
}

/// A tone that begins at its full height, so that its beginning can be found to the frame.
float beep(const std::vector<nanoseconds>& moments, nanoseconds heardAt) {
    const auto after = std::upper_bound(moments.begin(), moments.end(), heardAt);
    if (after == moments.begin() || heardAt - *std::prev(after) >= beepLength) {
        return 0;
    }
    const double time = std::chrono::duration<double>(heardAt - *std::prev(after)).count();
    return static_cast<float>(0.8 * std::cos(2 * std::numbers::pi * pitch * time));
}

}  // namespace

int main(int count, char** arguments) {
    const int moments = static_cast<int>(argument(count, arguments, "--moments", 40));
    const double pause = argument(count, arguments, "--pause", 0.3);
    const TestWindow window(side, side);
    const xcb_gcontext_t context = window.makeContext();
    std::vector<nanoseconds> all = chooseMoments(moments, pause);
    SoundPlayer player([&all](nanoseconds heardAt) { return beep(all, heardAt); });
    player.awaitPlaying();
    sayReady();
    for (const nanoseconds moment : all) {
        std::this_thread::sleep_until(Clock::time_point(moment - milliseconds(1)));
        while (Clock::now().time_since_epoch() < moment) {
        }
        const auto before = Clock::now();
        window.fill(context, white);
        const auto after = Clock::now();
        std::printf("%.9f %.9f %.9f\n", std::chrono::duration<double>(moment).count(), seconds(before), seconds(after));
        std::fflush(stdout);
        std::this_thread::sleep_until(Clock::time_point(moment + flashLength));
        window.fill(context, black);
    }
}
