// Records the main display as a host with a window of its own does, which lies on top of all: a square in magenta.
//
//     record_excluding --output DIR [--seconds N] [--exclude 1] [--moving 1]
//
// With --exclude the window is left out of the picture; with --moving it goes about the screen.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>

#include "Zorvane/Zorvane.hpp"
#include "clients/TestWindow.hpp"

namespace {

using namespace zorvane;
using benchmarks::Clock;

constexpr std::uint16_t side = 320;
constexpr std::uint32_t magenta = 0xFF00FF;

void fill(const benchmarks::TestWindow& window) {
    const xcb_gcontext_t context = window.makeContext();
    window.setColor(context, magenta);
    const xcb_rectangle_t all{0, 0, side, side};
    xcb_poly_fill_rectangle(window.connection(), window.id(), context, 1, &all);
    window.sync();
}

void moveAbout(const benchmarks::TestWindow& window, int step) {
    const auto across = static_cast<std::uint32_t>(700 + 700 * std::sin(step * 0.021));
    const auto down = static_cast<std::uint32_t>(350 + 350 * std::cos(step * 0.033));
    const std::uint32_t values[] = {across, down};
    xcb_configure_window(window.connection(), window.id(), XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
    xcb_flush(window.connection());
}

std::string outputIn(int count, const char* const* arguments) {
    for (int index = 1; index + 1 < count; ++index) {
        if (std::strcmp(arguments[index], "--output") == 0) {
            return arguments[index + 1];
        }
    }
    throw std::invalid_argument("record_excluding: say where to with --output");
}

void record(int count, const char* const* arguments) {
    const double seconds = benchmarks::argument(count, arguments, "--seconds", 10);
    const bool isMoving = benchmarks::argument(count, arguments, "--moving", 0) > 0;
    ZVRecorder::DisplayOptions options;
    if (benchmarks::argument(count, arguments, "--exclude", 0) > 0) {
        options.excluding.insert(ZVRecorder::ScreenRecordingExcludeOptions::currentProcess);
    }
    const benchmarks::TestWindow window(side, side);
    fill(window);
    const auto display = ZVDisplay::preferred();
    if (!display) {
        throw std::runtime_error("record_excluding: there is no display");
    }
    ZVRecorder recorder({ZVRecorder::SchemaItem::display(display->id(), options)}, outputIn(count, arguments));
    recorder.start().get();
    constexpr auto rhythm = std::chrono::milliseconds(16);
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    for (int step = 0; Clock::now() < end; ++step) {
        if (isMoving) {
            moveAbout(window, step);
        }
        std::this_thread::sleep_for(rhythm);
    }
    static_cast<void>(recorder.stop().get());
    std::printf("{\"dropped\": %llu}\n", static_cast<unsigned long long>(recorder.statistics().framesDropped));
}

}  // namespace

int main(int count, char** arguments) {
    try {
        record(count, arguments);
        return EXIT_SUCCESS;
    } catch (...) {
        std::fprintf(stderr, "%s\n", localizedDescription(std::current_exception()).c_str());
        return EXIT_FAILURE;
    }
}
