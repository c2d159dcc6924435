// Ordinary windows, which a window manager frames and lists.
//
//     windows_client --windows N    shows so many and leaves them alone
//     windows_client --rounds N     opens, moves, renames, raises and closes one above another, so many times
//
// With rounds it tells each deed: a line with its name, the window's id, and the seconds on CLOCK_MONOTONIC right
// before the request was sent. What is told of a window that is renamed is its new title, behind those.
#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "TestWindow.hpp"

namespace {

using namespace zorvane::benchmarks;
using std::chrono::milliseconds;

/// One connection that windows are made on.
class Windows {
  public:
    Windows() : connection_(xcb_connect(nullptr, nullptr)) {
        if (xcb_connection_has_error(connection_)) {
            std::fprintf(stderr, "windows_client: there is no X server\n");
            std::exit(EXIT_FAILURE);
        }
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    }
    ~Windows() { xcb_disconnect(connection_); }
    Windows(const Windows&) = delete;
    Windows& operator=(const Windows&) = delete;

    xcb_window_t make() const {
        const xcb_window_t window = xcb_generate_id(connection_);
        const std::uint32_t background = screen_->white_pixel;
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen_->root, 100, 100, 300, 200, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &background);
        const std::uint32_t pid = static_cast<std::uint32_t>(getpid());
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1,
                            &pid);
        char host[256] = {};
        gethostname(host, sizeof(host) - 1);
        setText(window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, host);
        setText(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, std::string("windows\0Windows", 16));
        rename(window, "made");
        return window;
    }
    void show(xcb_window_t window) const {
        xcb_map_window(connection_, window);
        xcb_flush(connection_);
    }
    void move(xcb_window_t window, std::uint32_t x, std::uint32_t y) const {
        const std::uint32_t values[] = {x, y};
        xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
        xcb_flush(connection_);
    }
    void raise(xcb_window_t window) const {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_flush(connection_);
    }
    void rename(xcb_window_t window, const std::string& title) const {
        setText(window, atom("_NET_WM_NAME"), atom("UTF8_STRING"), title);
        xcb_flush(connection_);
    }
    void destroy(xcb_window_t window) const {
        xcb_destroy_window(connection_, window);
        xcb_flush(connection_);
    }

  private:
    xcb_atom_t atom(const char* name) const {
        const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            xcb_intern_atom_reply(connection_, cookie, nullptr), &std::free);
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }
    void setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string& text) const {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    }

    xcb_connection_t* connection_;
    const xcb_screen_t* screen_ = nullptr;
};

/// Does something and tells when.
void deed(const char* name, xcb_window_t window, const std::function<void()>& act, const std::string& more = "") {
    const auto before = Clock::now();
    act();
    std::printf("%s %u %.9f %s\n", name, window, seconds(before), more.c_str());
    std::fflush(stdout);
}

void playRounds(const Windows& windows, int rounds) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> length(500, 800);  // milliseconds: each deed is seen before the next
    const auto pause = [&] { std::this_thread::sleep_for(milliseconds(length(random))); };
    const xcb_window_t below = windows.make();
    windows.show(below);
    sayReady();
    pause();
    for (int round = 0; round < rounds; ++round) {
        const xcb_window_t window = windows.make();
        const std::string title = "round " + std::to_string(round);
        deed("open", window, [&] { windows.show(window); });
        pause();
        deed("move", window, [&] { windows.move(window, 400 + static_cast<std::uint32_t>(round), 300); });
        pause();
        deed(
            "rename", window, [&] { windows.rename(window, title); }, title);
        pause();
        deed("raise", below, [&] { windows.raise(below); });
        pause();
        deed("close", window, [&] { windows.destroy(window); });
        pause();
    }
}

}  // namespace

int main(int count, char** arguments) {
    const int still = static_cast<int>(argument(count, arguments, "--windows", 0));
    const Windows windows;
    for (int index = 0; index < still; ++index) {
        windows.show(windows.make());
    }
    const int rounds = static_cast<int>(argument(count, arguments, "--rounds", 0));
    if (rounds > 0) {
        playRounds(windows, rounds);
        return 0;
    }
    sayReady();
    for (;;) {
        pause();
    }
}
