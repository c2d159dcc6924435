#include "Zorvane/Platform/Virtual/VirtualUser.hpp"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"

namespace zorvane {
namespace {

using std::chrono::nanoseconds;

constexpr nanoseconds stepDuration = std::chrono::milliseconds(100);
constexpr std::uint32_t stepsPerRound = 60;
constexpr std::uint32_t stepsInMotion = 40;

CGPoint pointerAt(std::uint32_t step) {
    const double angle = 2 * std::numbers::pi * step / stepsInMotion;
    return {1440 + 200 * std::cos(angle), 255 + 100 * std::sin(angle)};
}

/// What is done at a step beside moving: a click, and "Hi" with return.
void act(std::uint32_t step, const VirtualMoment& now) {
    // Made at each call: threads may still play while the process exits and destroys what is static.
    const VirtualKey h{.keycode = 4, .characters = "H", .charactersIgnoringModifiers = "H"};
    const VirtualKey i{.keycode = 34, .characters = "i", .charactersIgnoringModifiers = "i"};
    const VirtualKey returnKey{.keycode = 36, .characters = "\r", .charactersIgnoringModifiers = "\r"};
    switch (step) {
        case 10:
            now.pressButton();
            break;
        case 15:
            now.releaseButton();
            break;
        case 20:
            now.setFlags(CGEventFlags::maskShift).pressKey(h);
            break;
        case 21:
            now.releaseKey(h).setFlags(CGEventFlags::none);
            break;
        case 23:
            now.pressKey(i);
            break;
        case 24:
            now.releaseKey(i);
            break;
        case 27:
            now.pressKey(returnKey);
            break;
        case 28:
            now.releaseKey(returnKey);
            break;
        default:
            break;
    }
}

void play(VirtualDesktop& desktop, nanoseconds start, std::uint32_t number) {
    const std::uint32_t step = number % stepsPerRound;
    const VirtualMoment now = desktop.now();
    if (step < stepsInMotion) {
        now.movePointer(pointerAt(step));
    }
    act(step, now);
    desktop.schedule(start + (number + 1) * stepDuration,
                     [start, number](VirtualDesktop& same) { play(same, start, number + 1); });
}

}  // namespace

void playUser(VirtualDesktop& desktop) {
    play(desktop, desktop.clock()->now(), 0);
}

}  // namespace zorvane
