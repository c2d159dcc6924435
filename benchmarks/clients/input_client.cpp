// Presses buttons and keys, or moves the pointer at a steady rate, as a user's devices would.
//
//     input_client [--actions N]               clicks and keys by turns, with pauses that differ; a line for each:
//                                              "button" or "key", 1 for down, place, and the seconds on CLOCK_MONOTONIC
//                                              before the request was sent and after the server had carried it out
//     input_client --rate HZ --seconds S       movement, by turns of two places; tells how many there were at the end
//
// With --wait S it begins S seconds after it has said that it is ready.
#include <xcb/xtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>

#include "TestWindow.hpp"

namespace {

using namespace zorvane::benchmarks;
using std::chrono::milliseconds;

class Devices {
  public:
    Devices() : connection_(xcb_connect(nullptr, nullptr)) {
        if (xcb_connection_has_error(connection_) != 0) {
            std::fputs("input_client: no X server\n", stderr);
            std::exit(1);
        }
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    Devices(const Devices&) = delete;
    Devices& operator=(const Devices&) = delete;
    ~Devices() { xcb_disconnect(connection_); }

    void send(std::uint8_t type, std::uint8_t detail, std::int16_t x = 0, std::int16_t y = 0) const {
        xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_, x, y, 0);
    }
    void flush() const { xcb_flush(connection_); }
    void sync() const { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

  private:
    xcb_connection_t* connection_;
    xcb_window_t root_ = 0;
};

struct Place {
    std::int16_t x;
    std::int16_t y;
};

/// Sends one event and tells of it.
void act(const Devices& devices, const char* kind, std::uint8_t type, std::uint8_t detail, Place place) {
    const bool isDown = type == XCB_BUTTON_PRESS || type == XCB_KEY_PRESS;
    const auto before = Clock::now();
    devices.send(type, detail);
    devices.sync();
    std::printf("%s %d %d %d %.9f %.9f\n", kind, isDown ? 1 : 0, place.x, place.y, seconds(before),
                seconds(Clock::now()));
    std::fflush(stdout);
}

void clickAndType(const Devices& devices, int actions) {
    constexpr std::uint8_t keyOfLetterA = 38;
    std::mt19937 random(1);
    std::uniform_int_distribution<int> pause(20, 90);
    std::uniform_int_distribution<std::int16_t> x(0, 1919);
    std::uniform_int_distribution<std::int16_t> y(0, 1079);
    Place place{};
    for (int action = 0; action < actions; ++action) {
        std::this_thread::sleep_for(milliseconds(pause(random)));
        if (action % 2 == 0) {
            place = {x(random), y(random)};
            devices.send(XCB_MOTION_NOTIFY, 0, place.x, place.y);
            act(devices, "button", XCB_BUTTON_PRESS, 1, place);
            act(devices, "button", XCB_BUTTON_RELEASE, 1, place);
        } else {
            act(devices, "key", XCB_KEY_PRESS, keyOfLetterA, place);
            act(devices, "key", XCB_KEY_RELEASE, keyOfLetterA, place);
        }
    }
}

void moveAbout(const Devices& devices, double rate, double length) {
    const auto begin = Clock::now();
    std::uint64_t sent = 0;
    for (; static_cast<double>(sent) < rate * length; ++sent) {
        const std::chrono::duration<double> due(static_cast<double>(sent) / rate);
        std::this_thread::sleep_until(begin + std::chrono::duration_cast<Clock::duration>(due));
        devices.send(XCB_MOTION_NOTIFY, 0, static_cast<std::int16_t>(600 + sent % 2), static_cast<std::int16_t>(500));
        devices.flush();
    }
    devices.sync();
    std::printf("moves %llu\n", static_cast<unsigned long long>(sent));
}

}  // namespace

int main(int count, char** arguments) {
    const double rate = argument(count, arguments, "--rate", 0);
    const Devices devices;
    sayReady();
    std::this_thread::sleep_for(milliseconds(static_cast<int>(argument(count, arguments, "--wait", 0) * 1000)));
    if (rate > 0) {
        moveAbout(devices, rate, argument(count, arguments, "--seconds", 3600));
    } else {
        clickAndType(devices, static_cast<int>(argument(count, arguments, "--actions", 60)));
    }
}
