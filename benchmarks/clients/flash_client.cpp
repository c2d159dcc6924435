// Turns a window white at moments that it tells: a line for each, with the seconds on CLOCK_MONOTONIC before the
// request was sent and after the server had carried it out. The pauses between flashes differ, so that they fall on
// every phase of a recorder's rhythm.
//
//     flash_client [--flashes N]
#include <cstdint>
#include <cstdio>
#include <random>
#include <thread>

#include "TestWindow.hpp"

namespace {

using namespace zorvane::benchmarks;
using std::chrono::milliseconds;

constexpr std::uint16_t side = 256;
constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t black = 0;

}  // namespace

int main(int count, char** arguments) {
    const int flashes = static_cast<int>(argument(count, arguments, "--flashes", 40));
    const TestWindow window(side, side);
    const xcb_gcontext_t context = window.makeContext();
    std::mt19937 random(1);
    std::uniform_int_distribution<int> pause(60, 260);
    sayReady();
    for (int flash = 0; flash < flashes; ++flash) {
        std::this_thread::sleep_for(milliseconds(pause(random)));
        const auto before = Clock::now();
        window.fill(context, white);
        const auto after = Clock::now();
        std::printf("%.9f %.9f\n", seconds(before), seconds(after));
        std::fflush(stdout);
        std::this_thread::sleep_for(milliseconds(pause(random)));
        window.fill(context, black);
    }
}
