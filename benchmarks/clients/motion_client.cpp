// Moves a detailed picture over a window, and stamps each frame with its number, as a row of black and white squares at
// the top left: one white, one black, then 24 binary digits, the highest first. A frame appears in one stroke. Tells
// the number of each frame and the seconds on CLOCK_MONOTONIC when the server had shown it. Runs until it is ended.
//
//     motion_client [--fps N] [--width N] [--height N] [--grey 1]     (default: 30, the screen's size, in colours)
#include <xcb/xcb.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>

#include "TestWindow.hpp"

namespace {

using namespace zorvane::benchmarks;

constexpr std::uint16_t square = 32;
constexpr int digits = 24;
constexpr std::uint32_t white = 0xFFFFFF;
constexpr int travel = 480;  // pixels that the picture is larger than the window, each way

std::uint32_t wave(double position) {
    return static_cast<std::uint32_t>(127.5 + 127.5 * std::sin(position));
}

/// Soft colours with sharp edges in between, as films and games have them.
std::uint32_t pixelAt(int x, int y) {
    const bool isEdge = ((x / 96) ^ (y / 64)) % 5 == 0;
    const std::uint32_t grain = static_cast<std::uint32_t>(x * 7919 ^ y * 104729) % 12;
    const std::uint32_t red = isEdge ? 230 : wave(x * 0.011 + y * 0.004) * 9 / 10 + grain;
    const std::uint32_t green = wave(y * 0.013 - x * 0.003) * 9 / 10 + grain;
    const std::uint32_t blue = wave((x + y) * 0.007) * 9 / 10 + grain;
    return red << 16 | green << 8 | blue;
}

std::uint32_t greyPixelAt(int x, int y) {
    constexpr std::uint32_t thrice = 0x010101;
    return (pixelAt(x, y) & 0xFFU) * thrice;
}

class Motion {
  public:
    Motion(std::uint16_t width, std::uint16_t height, std::uint32_t (*color)(int x, int y))
        : color_(color),
          window_(width, height),
          context_(window_.makeContext()),
          scene_(makeScene()),
          frame_(window_.makePixmap(window_.width(), window_.height())) {}

    void show(std::uint32_t number) {
        const auto x = static_cast<std::int16_t>(travel / 2 * (1 + std::sin(number * 0.05)));
        const auto y = static_cast<std::int16_t>(travel / 2 * (1 + std::cos(number * 0.037)));
        xcb_copy_area(window_.connection(), scene_, frame_, context_, x, y, 0, 0, window_.width(), window_.height());
        stamp(number);
        xcb_copy_area(window_.connection(), frame_, window_.id(), context_, 0, 0, 0, 0, window_.width(),
                      window_.height());
        window_.sync();
    }

  private:
    xcb_pixmap_t makeScene() const {
        const auto width = static_cast<std::uint16_t>(window_.width() + travel);
        const auto height = static_cast<std::uint16_t>(window_.height() + travel);
        const xcb_pixmap_t scene = window_.makePixmap(width, height);
        std::vector<std::uint32_t> row(width);
        for (std::uint16_t y = 0; y < height; ++y) {
            for (std::uint16_t x = 0; x < width; ++x) {
                row[x] = color_(x, y);
            }
            xcb_put_image(window_.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, scene, context_, width, 1, 0,
                          static_cast<std::int16_t>(y), 0, 24, width * 4U,
                          reinterpret_cast<const std::uint8_t*>(row.data()));
        }
        window_.sync();
        return scene;
    }

    void stamp(std::uint32_t number) const {
        fillSquare(0, true);
        fillSquare(1, false);
        for (int digit = 0; digit < digits; ++digit) {
            fillSquare(2 + digit, (number >> (digits - 1 - digit) & 1) != 0);
        }
    }

    void fillSquare(int place, bool isWhite) const {
        window_.setColor(context_, isWhite ? white : 0);
        const xcb_rectangle_t area{static_cast<std::int16_t>(place * square), 0, square, square};
        xcb_poly_fill_rectangle(window_.connection(), frame_, context_, 1, &area);
    }

    std::uint32_t (*const color_)(int x, int y);
    const TestWindow window_;
    const xcb_gcontext_t context_;
    const xcb_pixmap_t scene_;
    const xcb_pixmap_t frame_;
};

}  // namespace

int main(int count, char** arguments) {
    const double framesPerSecond = argument(count, arguments, "--fps", 30);
    Motion motion(static_cast<std::uint16_t>(argument(count, arguments, "--width", 0)),
                  static_cast<std::uint16_t>(argument(count, arguments, "--height", 0)),
                  argument(count, arguments, "--grey", 0) > 0 ? greyPixelAt : pixelAt);
    const std::chrono::duration<double> pause(1 / framesPerSecond);
    sayReady();
    const auto start = Clock::now();
    for (std::uint32_t number = 0;; ++number) {
        std::this_thread::sleep_until(start + std::chrono::duration_cast<Clock::duration>(number * pause));
        motion.show(number);
        std::printf("%u %.9f\n", number, seconds(Clock::now()));
        std::fflush(stdout);
    }
}
