#include "tests/Support/X11TestProgram.hpp"

#include <unistd.h>
#include <xcb/composite.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

namespace zorvane {
namespace {

template <class T>
std::unique_ptr<T, decltype(&std::free)> owned(T* reply) {
    return {reply, &std::free};
}

std::string hostName() {
    char name[256]{};
    gethostname(name, sizeof name - 1);
    return name;
}

std::uint32_t visualOfDepth(const xcb_screen_t& screen, std::uint8_t wanted) {
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth)) {
        if (depth.data->depth == wanted && xcb_depth_visuals_length(depth.data) > 0) {
            return xcb_depth_visuals(depth.data)->visual_id;
        }
    }
    throw std::runtime_error("the X server has no such visual");
}

}  // namespace

X11TestProgram::X11TestProgram(std::optional<std::int32_t> processID)
    : connection_(xcb_connect(nullptr, nullptr)), processID_(processID) {
    if (xcb_connection_has_error(connection_)) {
        xcb_disconnect(connection_);
        throw std::runtime_error("the test program can't reach the X server");
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    owned(xcb_composite_query_version_reply(connection_, xcb_composite_query_version(connection_, 0, 4), nullptr));
    context_ = xcb_generate_id(connection_);
    xcb_create_gc(connection_, context_, screen_->root, 0, nullptr);
}

X11TestProgram::~X11TestProgram() {
    xcb_disconnect(connection_);
}

std::uint32_t X11TestProgram::make(const TestRect& rect, std::uint16_t border, std::uint32_t mask,
                                   const std::vector<std::uint32_t>& values, std::uint8_t depth, std::uint32_t visual) {
    const std::uint32_t window = xcb_generate_id(connection_);
    xcb_create_window(connection_, depth, window, screen_->root, rect.x, rect.y, rect.width, rect.height, border,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual, mask, values.data());
    if (processID_) {
        nameOwner(window, *processID_);
    }
    show(window);
    return window;
}

void X11TestProgram::nameOwner(std::uint32_t window, std::int32_t processID) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1,
                        &processID);
    const std::string machine = hostName();
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(machine.size()), machine.data());
    synchronize();
}

std::uint32_t X11TestProgram::makeWindow(const TestRect& rect, std::uint32_t color, std::uint16_t border) {
    return make(rect, border, XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT, {color, color, 1},
                XCB_COPY_FROM_PARENT, XCB_COPY_FROM_PARENT);
}

std::uint32_t X11TestProgram::makeManagedWindow(const TestRect& rect, std::uint32_t color) {
    return make(rect, 0, XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL, {color, color}, XCB_COPY_FROM_PARENT,
                XCB_COPY_FROM_PARENT);
}

std::uint32_t X11TestProgram::makeUnpaintedWindow(const TestRect& rect) {
    return make(rect, 0, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                {XCB_BACK_PIXMAP_NONE, 1, XCB_EVENT_MASK_EXPOSURE}, XCB_COPY_FROM_PARENT, XCB_COPY_FROM_PARENT);
}

std::uint32_t X11TestProgram::makeTranslucentWindow(const TestRect& rect, std::uint32_t argb) {
    const std::uint32_t visual = visualOfDepth(*screen_, 32);
    const std::uint32_t colors = xcb_generate_id(connection_);
    xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colors, screen_->root, visual);
    return make(rect, 0, XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
                {argb, 0, 1, colors}, 32, visual);
}

void X11TestProgram::fill(std::uint32_t window, const TestRect& rect, std::uint32_t color) {
    const xcb_rectangle_t rectangle{rect.x, rect.y, rect.width, rect.height};
    xcb_change_gc(connection_, context_, XCB_GC_FOREGROUND, &color);
    xcb_poly_fill_rectangle(connection_, window, context_, 1, &rectangle);
    synchronize();
}

void X11TestProgram::configure(std::uint32_t window, std::uint16_t mask, const std::vector<std::uint32_t>& values) {
    xcb_configure_window(connection_, window, mask, values.data());
    synchronize();
}

void X11TestProgram::move(std::uint32_t window, std::int16_t x, std::int16_t y) {
    configure(window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
              {static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)});
}

void X11TestProgram::resize(std::uint32_t window, std::uint16_t width, std::uint16_t height) {
    configure(window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, {width, height});
}

void X11TestProgram::raise(std::uint32_t window) {
    configure(window, XCB_CONFIG_WINDOW_STACK_MODE, {XCB_STACK_MODE_ABOVE});
}

void X11TestProgram::lower(std::uint32_t window) {
    configure(window, XCB_CONFIG_WINDOW_STACK_MODE, {XCB_STACK_MODE_BELOW});
}

void X11TestProgram::show(std::uint32_t window) {
    xcb_map_window(connection_, window);
    synchronize();
}

void X11TestProgram::hide(std::uint32_t window) {
    xcb_unmap_window(connection_, window);
    synchronize();
}

void X11TestProgram::close(std::uint32_t window) {
    xcb_destroy_window(connection_, window);
    synchronize();
}

void X11TestProgram::cut(std::uint32_t window, const TestRect& rect) {
    const xcb_rectangle_t rectangle{rect.x, rect.y, rect.width, rect.height};
    xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, window, 0, 0,
                         1, &rectangle);
    synchronize();
}

std::uint32_t X11TestProgram::frame(std::uint32_t window, const TestRect& rect, std::int16_t thickness,
                                    std::uint32_t color, FrameKind kind) {
    const std::uint32_t frame = xcb_generate_id(connection_);
    const std::uint32_t values[]{color, kind == FrameKind::overriding};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, frame, screen_->root, rect.x, rect.y, rect.width, rect.height,
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    takeCareOf(window, frame, thickness);
    show(frame);
    return frame;
}

void X11TestProgram::addToFrame(std::uint32_t window, std::uint32_t frame) {
    takeCareOf(window, frame, 0);
    synchronize();
}

void X11TestProgram::takeCareOf(std::uint32_t window, std::uint32_t frame, std::int16_t place) {
    xcb_reparent_window(connection_, window, frame, place, place);
    const std::uint32_t normalState[]{1, XCB_NONE};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom("WM_STATE"), atom("WM_STATE"), 32, 2,
                        normalState);
    xcb_map_window(connection_, window);
}

void X11TestProgram::setBackground(std::uint32_t color) {
    xcb_change_window_attributes(connection_, screen_->root, XCB_CW_BACK_PIXEL, &color);
    xcb_clear_area(connection_, 0, screen_->root, 0, 0, 0, 0);
    synchronize();
}

void X11TestProgram::setBackgroundPicture(std::uint32_t color) {
    const std::uint32_t pixmap = xcb_generate_id(connection_);
    xcb_create_pixmap(connection_, screen_->root_depth, pixmap, screen_->root, 16, 16);
    fill(pixmap, {0, 0, 16, 16}, color);
    xcb_change_window_attributes(connection_, screen_->root, XCB_CW_BACK_PIXMAP, &pixmap);
    xcb_clear_area(connection_, 0, screen_->root, 0, 0, 0, 0);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, screen_->root, atom("_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32,
                        1, &pixmap);
    synchronize();
}

void X11TestProgram::takeAllWindows() {
    xcb_composite_redirect_subwindows(connection_, screen_->root, XCB_COMPOSITE_REDIRECT_MANUAL);
    synchronize();
}

void X11TestProgram::makeOverlay() {
    owned(xcb_composite_get_overlay_window_reply(
        connection_, xcb_composite_get_overlay_window(connection_, screen_->root), nullptr));
}

bool X11TestProgram::hasOwnPixmap(std::uint32_t window) {
    const std::uint32_t pixmap = xcb_generate_id(connection_);
    const auto request = xcb_composite_name_window_pixmap_checked(connection_, window, pixmap);
    if (owned(xcb_request_check(connection_, request))) {
        return false;
    }
    xcb_free_pixmap(connection_, pixmap);
    return true;
}

bool X11TestProgram::wasAskedToPaint(std::uint32_t window) {
    synchronize();
    bool wasAsked = false;
    while (const auto event = owned(xcb_poll_for_event(connection_))) {
        const auto type = event->response_type & 0x7F;
        wasAsked |= type == XCB_EXPOSE && reinterpret_cast<xcb_expose_event_t*>(event.get())->window == window;
    }
    return wasAsked;
}

std::uint32_t X11TestProgram::atom(const char* name) {
    const auto query = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const auto reply = owned(xcb_intern_atom_reply(connection_, query, nullptr));
    return reply ? reply->atom : 0;
}

void X11TestProgram::synchronize() {
    owned(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace zorvane
