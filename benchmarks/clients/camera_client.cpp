// Is a camera, "zorvane-figures-camera", and a microphone, "zorvane-figures-microphone", that see and hear the full
// seconds of CLOCK_MONOTONIC: the first picture of each is a flash, and the sound is a ramp that falls with each. A
// window flashes then as well. Tells a line for each second: it, the seconds before the request to the X server was
// sent and after the server had carried it out, and those at which the camera's flash was taken.
//
//     camera_client [--width N] [--height N] [--rate N] [--jpeg 1] [--seconds N]
//
// Without --seconds it goes on, and says no more than that it is ready.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <thread>

#include "TestWindow.hpp"
#include "tests/Support/PipeWireTestCamera.hpp"
#include "tests/Support/PipeWireTestMicrophone.hpp"

namespace {

using namespace zorvane;
using namespace zorvane::benchmarks;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr std::uint16_t side = 256;
constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t black = 0;

PipeWireVideoFormat format(int count, const char* const* arguments) {
    PipeWireVideoFormat format;
    const bool isJPEG = argument(count, arguments, "--jpeg", 0) != 0;
    format.encoding = isJPEG ? AVVideoSourceFormat::jpeg : AVVideoSourceFormat::yuyv;
    format.size.width = static_cast<std::int32_t>(argument(count, arguments, "--width", 1920));
    format.size.height = static_cast<std::int32_t>(argument(count, arguments, "--height", 1080));
    format.rate.frames = static_cast<std::uint32_t>(argument(count, arguments, "--rate", 30));
    return format;
}

/// When the camera took its first picture at or after `moment`; 0 if it took none.
double flashOf(const PipeWireTestCamera& camera, nanoseconds moment) {
    const auto pictures = camera.taken();
    const auto first = std::ranges::lower_bound(pictures, moment, {}, &PipeWireTestCamera::Taken::time);
    return first == pictures.end() ? 0 : std::chrono::duration<double>(first->time).count();
}

void flashWindow(const PipeWireTestCamera& camera, int flashes) {
    const TestWindow window(side, side);
    const xcb_gcontext_t context = window.makeContext();
    nanoseconds moment = std::chrono::ceil<std::chrono::seconds>(Clock::now().time_since_epoch());
    for (; flashes > 0; --flashes, moment += std::chrono::seconds(1)) {
        std::this_thread::sleep_until(Clock::time_point(moment - milliseconds(1)));
        while (Clock::now().time_since_epoch() < moment) {
        }
        const auto before = Clock::now();
        window.fill(context, white);
        const auto after = Clock::now();
        std::this_thread::sleep_until(Clock::time_point(moment + milliseconds(300)));
        window.fill(context, black);
        std::printf("%.9f %.9f %.9f %.9f\n", std::chrono::duration<double>(moment).count(), seconds(before),
                    seconds(after), flashOf(camera, moment));
        std::fflush(stdout);
    }
}

}  // namespace

int main(int count, char** arguments) {
    const int flashes = static_cast<int>(argument(count, arguments, "--seconds", 0));
    const PipeWireTestCamera camera({.name = "zorvane-figures-camera", .formats = {format(count, arguments)}});
    const PipeWireTestMicrophone microphone({.name = "zorvane-figures-microphone"});
    sayReady();
    if (flashes > 0) {
        flashWindow(camera, flashes);
    } else {
        std::this_thread::sleep_for(std::chrono::hours(1000));
    }
}
