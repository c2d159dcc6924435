#include "TestWindow.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace zorvane::benchmarks {
namespace {

[[noreturn]] void fail(const char* problem) {
    std::fprintf(stderr, "test client: %s\n", problem);
    std::exit(EXIT_FAILURE);
}

}  // namespace

double seconds(Clock::time_point time) {
    return std::chrono::duration<double>(time.time_since_epoch()).count();
}

TestWindow::TestWindow(std::uint16_t width, std::uint16_t height, Kind kind)
    : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_)) {
        fail("there is no X server");
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    width_ = width ? width : screen_->width_in_pixels;
    height_ = height ? height : screen_->height_in_pixels;
    window_ = xcb_generate_id(connection_);
    // In the order of the bits.
    const std::uint32_t values[] = {screen_->black_pixel, kind == Kind::unmanaged ? 1U : 0U};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen_->root, 0, 0, width_, height_, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                      values);
    xcb_map_window(connection_, window_);
    sync();
}

TestWindow::~TestWindow() {
    xcb_disconnect(connection_);
}

xcb_pixmap_t TestWindow::makePixmap(std::uint16_t width, std::uint16_t height) const {
    const xcb_pixmap_t pixmap = xcb_generate_id(connection_);
    xcb_create_pixmap(connection_, screen_->root_depth, pixmap, window_, width, height);
    return pixmap;
}

xcb_gcontext_t TestWindow::makeContext() const {
    const xcb_gcontext_t context = xcb_generate_id(connection_);
    const std::uint32_t noExposures = 0;
    xcb_create_gc(connection_, context, window_, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    return context;
}

void TestWindow::setColor(xcb_gcontext_t context, std::uint32_t color) const {
    xcb_change_gc(connection_, context, XCB_GC_FOREGROUND, &color);
}

void TestWindow::fill(xcb_gcontext_t context, std::uint32_t color) const {
    setColor(context, color);
    const xcb_rectangle_t all{0, 0, width_, height_};
    xcb_poly_fill_rectangle(connection_, window_, context, 1, &all);
    sync();
}

void TestWindow::sync() const {
    xcb_get_input_focus_reply_t* const reply =
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr);
    if (!reply) {
        fail("the X server has gone");
    }
    std::free(reply);
}

void sayReady() {
    std::puts("ready");
    std::fflush(stdout);
}

double argument(int count, const char* const* arguments, const char* name, double otherwise) {
    for (int index = 1; index + 1 < count; ++index) {
        if (std::strcmp(arguments[index], name) == 0) {
            return std::atof(arguments[index + 1]);
        }
    }
    return otherwise;
}

}  // namespace zorvane::benchmarks
