#include "Zorvane/Platform/Virtual/VirtualUser.hpp"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <map>
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

const std::map<std::uint32_t, void (*)(const VirtualMoment& now)>& acts() {
    static const VirtualKey h{.keycode = 4, .characters = "H", .charactersIgnoringModifiers = "H"};
    static const VirtualKey i{.keycode = 34, .characters = "i", .charactersIgnoringModifiers = "i"};
    static const VirtualKey returnKey{.keycode = 36, .characters = "\r", .charactersIgnoringModifiers = "\r"};
    static const std::map<std::uint32_t, void (*)(const VirtualMoment&)> byStep{
        {10, [](const VirtualMoment& now) { now.pressButton(); }},
        {15, [](const VirtualMoment& now) { now.releaseButton(); }},
        {20, [](const VirtualMoment& now) { now.setFlags(CGEventFlags::maskShift).pressKey(h); }},
        {21, [](const VirtualMoment& now) { now.releaseKey(h).setFlags(CGEventFlags::none); }},
        {23, [](const VirtualMoment& now) { now.pressKey(i); }},
        {24, [](const VirtualMoment& now) { now.releaseKey(i); }},
        {27, [](const VirtualMoment& now) { now.pressKey(returnKey); }},
        {28, [](const VirtualMoment& now) { now.releaseKey(returnKey); }},
    };
    return byStep;
}

void play(VirtualDesktop& desktop, nanoseconds start, std::uint32_t number) {
    const std::uint32_t step = number % stepsPerRound;
    const VirtualMoment now = desktop.now();
    if (step < stepsInMotion) {
        now.movePointer(pointerAt(step));
    }
    if (const auto act = acts().find(step); act != acts().end()) {
        act->second(now);
    }
    desktop.schedule(start + (number + 1) * stepDuration,
                     [start, number](VirtualDesktop& same) { play(same, start, number + 1); });
}

}  // namespace

void playUser(VirtualDesktop& desktop) {
    play(desktop, desktop.clock()->now(), 0);
}

}  // namespace zorvane
