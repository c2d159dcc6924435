// Plays a tone without a break until it is ended.
//
//     tone_client [--pitch HZ]
#include <csignal>

#include <chrono>
#include <cmath>
#include <numbers>

#include "SoundClock.hpp"
#include "TestWindow.hpp"

namespace {

using namespace zorvane::benchmarks;

constexpr double loudness = 0.5;

}  // namespace

int main(int count, char** arguments) {
    const double step = 2 * std::numbers::pi * argument(count, arguments, "--pitch", 440) / SoundPlayer::rate;
    double phase = 0;
    SoundPlayer player([&](std::chrono::nanoseconds) {
        phase = std::fmod(phase + step, 2 * std::numbers::pi);
        return static_cast<float>(loudness * std::sin(phase));
    });
    player.awaitPlaying();
    sayReady();
    sigset_t none{};
    sigemptyset(&none);
    sigsuspend(&none);
}
