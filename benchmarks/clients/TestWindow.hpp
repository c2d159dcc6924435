// A window that a test client draws into, and the clock by which it does.
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>

namespace zorvane::benchmarks {

/// `CLOCK_MONOTONIC`, which the recordings' times are told in as well.
using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point time);

/// A window at the screen's top left corner, on a connection of its own. One thread. Errors of the
/// connection end the process with a message: a client that can't draw measures nothing.
class TestWindow {
  public:
    enum class Kind : std::uint8_t {
        unmanaged,  ///< without a frame; the window manager leaves it alone
        managed,
    };

    /// Shows the window, all black. A side of 0 is that of the screen.
    TestWindow(std::uint16_t width, std::uint16_t height, Kind kind = Kind::unmanaged);
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    ~TestWindow();

    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t id() const { return window_; }
    std::uint16_t width() const { return width_; }
    std::uint16_t height() const { return height_; }

    /// A picture in the server's memory, as large as told and as deep as the window.
    xcb_pixmap_t makePixmap(std::uint16_t width, std::uint16_t height) const;
    xcb_gcontext_t makeContext() const;
    void setColor(xcb_gcontext_t context, std::uint32_t color) const;
    /// All of it in one colour; ends when the server has done so.
    void fill(xcb_gcontext_t context, std::uint32_t color) const;

    /// Waits until the server has done everything asked for.
    void sync() const;

  private:
    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
    xcb_window_t window_ = 0;
    std::uint16_t width_;
    std::uint16_t height_;
};

/// Tells whoever waits at the other end of standard output that the window shows.
void sayReady();

/// The number behind `name` on the command line, or else `otherwise`.
double argument(int count, const char* const* arguments, const char* name, double otherwise);

}  // namespace zorvane::benchmarks
