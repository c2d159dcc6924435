// A terminal that prints in bursts: scrolls a window line by line and writes text into the new lines, the same text in
// each run. Runs until it is ended.
//
//     scroll_client [--bursts-per-second N] [--lines N]
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <thread>

#include "TestWindow.hpp"

namespace {

using namespace zorvane::benchmarks;

constexpr std::uint16_t width = 1200;
constexpr std::uint16_t height = 800;
constexpr std::int16_t lineHeight = 16;
constexpr std::array<std::uint32_t, 4> colors{0xD0D0D0, 0x80C080, 0xC0A060, 0x80A0E0};

class Terminal {
  public:
    Terminal() : window_(width, height), text_(window_.makeContext()), background_(window_.makeContext()) {
        const std::string name = "fixed";
        const xcb_font_t font = xcb_generate_id(window_.connection());
        xcb_open_font(window_.connection(), font, static_cast<std::uint16_t>(name.size()), name.c_str());
        xcb_change_gc(window_.connection(), text_, XCB_GC_FONT, &font);
        window_.setColor(background_, 0);
        for (int line = 0; line < height / lineHeight; ++line) {
            printLine();
        }
        window_.sync();
    }

    void printLines(int lines) {
        for (int line = 0; line < lines; ++line) {
            printLine();
            xcb_flush(window_.connection());
        }
    }

  private:
    void printLine() {
        constexpr std::int16_t top = height - lineHeight;
        xcb_copy_area(window_.connection(), window_.id(), window_.id(), background_, 0, lineHeight, 0, 0, width, top);
        const xcb_rectangle_t bottom{0, top, width, lineHeight};
        xcb_poly_fill_rectangle(window_.connection(), window_.id(), background_, 1, &bottom);
        window_.setColor(text_, colors[random_() % colors.size()]);
        const std::string text = nextText();
        xcb_image_text_8(window_.connection(), static_cast<std::uint8_t>(text.size()), window_.id(), text_, 4,
                         height - 4, text.c_str());
    }

    std::string nextText() {
        std::string text(20 + random_() % 160, ' ');
        for (char& letter : text) {
            letter = random_() % 6 == 0 ? ' ' : static_cast<char>('!' + random_() % 94);
        }
        return text;
    }

    const TestWindow window_;
    const xcb_gcontext_t text_;
    const xcb_gcontext_t background_;
    std::mt19937 random_{1};
};

}  // namespace

int main(int count, char** arguments) {
    const double burstsPerSecond = argument(count, arguments, "--bursts-per-second", 5);
    const int lines = static_cast<int>(argument(count, arguments, "--lines", 20));
    const auto pause = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1 / burstsPerSecond));
    Terminal terminal;
    sayReady();
    for (auto next = Clock::now();; next += pause) {
        std::this_thread::sleep_until(next);
        terminal.printLines(lines);
    }
}
