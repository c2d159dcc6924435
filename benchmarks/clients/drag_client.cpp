// Moves a small window of its own that the window manager takes care of, as one that is dragged, until it is killed.
//
//     drag_client [--rate HZ]
#include <cstdint>
#include <thread>

#include "TestWindow.hpp"

int main(int count, char** arguments) {
    using namespace zorvane::benchmarks;
    const double rate = argument(count, arguments, "--rate", 60);
    const TestWindow window(64, 48, TestWindow::Kind::managed);
    sayReady();
    const auto begin = Clock::now();
    for (std::uint32_t step = 0;; ++step) {
        const std::chrono::duration<double> due(step / rate);
        std::this_thread::sleep_until(begin + std::chrono::duration_cast<Clock::duration>(due));
        const std::uint32_t place[] = {300 + step % 400, 200 + step % 300};
        xcb_configure_window(window.connection(), window.id(), XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
        window.sync();
    }
}
