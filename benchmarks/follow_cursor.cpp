// What it costs to know the cursor at any time: the processor time of a process that does nothing else.
//
//     follow_cursor [--moves PER_SECOND] [--seconds N]
//
// Another process moves the pointer of the X server that DISPLAY names, as a mouse of that rate does; at 0 it stands.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <thread>

#include "Zorvane/Internal/Recorders/CursorRecorder/CursorRecorder.hpp"
#include "clients/TestWindow.hpp"

namespace {

using namespace zorvane;
using benchmarks::Clock;

[[noreturn]] void movePointer(double movesPerSecond) {
    constexpr int width = 1000;
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const std::chrono::duration<double> rhythm(1 / movesPerSecond);
    const auto begin = Clock::now();
    for (int step = 0; !xcb_connection_has_error(connection); ++step) {
        xcb_test_fake_input(connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root,
                            static_cast<std::int16_t>(step % width), 300, 0);
        xcb_flush(connection);
        std::this_thread::sleep_until(begin + std::chrono::duration_cast<Clock::duration>((step + 1) * rhythm));
    }
    _exit(1);
}

double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) { return static_cast<double>(time.tv_sec) + time.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void measure(double seconds) {
    CursorRecorder recorder("bench", Logger::forCategory("follow_cursor"));
    recorder.prepare().get();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const double before = processorSeconds();
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    const double used = processorSeconds() - before;
    recorder.finish().get();
    std::printf("{\"processorPercent\": %.3f}\n", 100 * used / seconds);
}

}  // namespace

int main(int count, char** arguments) {
    const double movesPerSecond = benchmarks::argument(count, arguments, "--moves", 125);
    const double seconds = benchmarks::argument(count, arguments, "--seconds", 20);
    const pid_t mover = movesPerSecond > 0 ? fork() : -1;
    if (mover == 0) {
        movePointer(movesPerSecond);
    }
    measure(seconds);
    if (mover > 0) {
        kill(mover, SIGTERM);
        waitpid(mover, nullptr, 0);
    }
}
