#include "tests/Support/X11TestClient.hpp"

#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xcb_cursor.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace zorvane {
namespace {

template <class T>
std::unique_ptr<T, decltype(&std::free)> owned(T* reply) {
    return {reply, &std::free};
}

std::uint16_t to16(std::uint32_t color, int shift) {
    return static_cast<std::uint16_t>((color >> shift & 0xFF) * 0x101);
}

}  // namespace

X11TestClient::X11TestClient() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_)) {
        xcb_disconnect(connection_);
        throw std::runtime_error("the test client can't reach the X server");
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    context_ = xcb_generate_id(connection_);
    const std::uint32_t includeInferiors = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
    xcb_create_gc(connection_, context_, screen_->root, XCB_GC_SUBWINDOW_MODE, &includeInferiors);
}

X11TestClient::~X11TestClient() {
    xcb_disconnect(connection_);
}

void X11TestClient::synchronize() {
    owned(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

std::chrono::nanoseconds X11TestClient::fill(const TestRect& rect, std::uint32_t pixel) {
    const xcb_rectangle_t rectangle{rect.x, rect.y, rect.width, rect.height};
    xcb_change_gc(connection_, context_, XCB_GC_FOREGROUND, &pixel);
    xcb_poly_fill_rectangle(connection_, screen_->root, context_, 1, &rectangle);
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    synchronize();
    return time;
}

std::uint32_t X11TestClient::makeBareWindow(const TestRect& rect, std::uint32_t pixel, bool overridesRedirect) {
    const std::uint32_t window = xcb_generate_id(connection_);
    const std::array<std::uint32_t, 2> values{pixel, overridesRedirect ? 1U : 0U};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen_->root, rect.x, rect.y, rect.width, rect.height,
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());
    return window;
}

std::uint32_t X11TestClient::makeWindow(const TestRect& rect, std::uint32_t pixel) {
    const std::uint32_t window = makeBareWindow(rect, pixel, true);
    xcb_map_window(connection_, window);
    synchronize();
    return window;
}

std::uint32_t X11TestClient::makeManagedWindow(const TestRect& rect, const std::string& title,
                                               const std::string& windowClass) {
    const std::uint32_t window = makeBareWindow(rect, screen_->white_pixel, false);
    setText(window, "_NET_WM_NAME", "UTF8_STRING", title);
    setText(window, "WM_CLASS", "STRING", "instance" + std::string(1, '\0') + windowClass + '\0');
    setNumbers(window, "_NET_WM_PID", "CARDINAL", {static_cast<std::uint32_t>(getpid())});
    xcb_map_window(connection_, window);
    synchronize();
    return window;
}

void X11TestClient::closeWindow(std::uint32_t window) {
    xcb_destroy_window(connection_, window);
    synchronize();
}

void X11TestClient::moveWindow(std::uint32_t window, std::int16_t x, std::int16_t y) {
    const std::array<std::int32_t, 2> place{x, y};
    xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place.data());
    synchronize();
}

void X11TestClient::raiseWindow(std::uint32_t window) {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    synchronize();
}

void X11TestClient::unmapWindow(std::uint32_t window) {
    xcb_unmap_window(connection_, window);
    synchronize();
}

void X11TestClient::putInto(std::uint32_t frame, std::uint32_t window, std::int16_t x, std::int16_t y) {
    xcb_reparent_window(connection_, window, frame, x, y);
    xcb_map_window(connection_, window);
    xcb_map_window(connection_, frame);
    synchronize();
}

void X11TestClient::setText(std::uint32_t window, const std::string& property, const std::string& type,
                            const std::string& text) {
    change(window, property, type, 8, text.data(), text.size());
}

void X11TestClient::setNumbers(std::uint32_t window, const std::string& property, const std::string& type,
                               const std::vector<std::uint32_t>& numbers) {
    change(window, property, type, 32, numbers.data(), numbers.size());
}

void X11TestClient::setAtoms(std::uint32_t window, const std::string& property, const std::vector<std::string>& names) {
    std::vector<std::uint32_t> atoms;
    for (const std::string& name : names) {
        atoms.push_back(atom(name));
    }
    setNumbers(window, property, "ATOM", atoms);
}

void X11TestClient::change(std::uint32_t window, const std::string& property, const std::string& type,
                           std::uint8_t format, const void* data, std::size_t size) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window == 0 ? screen_->root : window, atom(property),
                        atom(type), format, static_cast<std::uint32_t>(size), data);
    synchronize();
}

void X11TestClient::removeProperty(std::uint32_t window, const std::string& property) {
    xcb_delete_property(connection_, window == 0 ? screen_->root : window, atom(property));
    synchronize();
}

void X11TestClient::askWindowManager(std::uint32_t window, const std::string& message, std::uint32_t number) {
    xcb_client_message_event_t event{.response_type = XCB_CLIENT_MESSAGE, .format = 32};
    event.window = window == 0 ? screen_->root : window;
    event.type = atom(message);
    event.data.data32[0] = number;
    xcb_send_event(connection_, 0, screen_->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    synchronize();
}

void X11TestClient::movePointer(std::int16_t x, std::int16_t y) {
    xcb_warp_pointer(connection_, XCB_NONE, screen_->root, 0, 0, 0, 0, x, y);
    synchronize();
}

void X11TestClient::setSquareCursor(std::uint8_t size, std::uint32_t color, const std::string& name) {
    const xcb_pixmap_t shape = xcb_generate_id(connection_);
    const xcb_gcontext_t ones = xcb_generate_id(connection_);
    const xcb_cursor_t cursor = xcb_generate_id(connection_);
    const std::uint32_t one = 1;
    const xcb_rectangle_t all{0, 0, size, size};
    xcb_create_pixmap(connection_, 1, shape, screen_->root, size, size);
    xcb_create_gc(connection_, ones, shape, XCB_GC_FOREGROUND, &one);
    xcb_poly_fill_rectangle(connection_, shape, ones, 1, &all);
    xcb_create_cursor(connection_, cursor, shape, shape, to16(color, 16), to16(color, 8), to16(color, 0), 0, 0, 0, 0,
                      0);
    if (!name.empty()) {
        xcb_xfixes_query_version(connection_, 2, 0);
        xcb_xfixes_set_cursor_name(connection_, cursor, static_cast<std::uint16_t>(name.size()), name.c_str());
    }
    xcb_change_window_attributes(connection_, screen_->root, XCB_CW_CURSOR, &cursor);
    synchronize();
}

void X11TestClient::setThemeCursor(const std::string& name) {
    xcb_cursor_context_t* context = nullptr;
    if (xcb_cursor_context_new(connection_, screen_, &context) < 0) {
        throw std::runtime_error("there is no cursor theme");
    }
    const xcb_cursor_t cursor = xcb_cursor_load_cursor(context, name.c_str());
    xcb_cursor_context_free(context);
    if (cursor == XCB_NONE) {
        throw std::runtime_error("the cursor theme has no " + name);
    }
    xcb_change_window_attributes(connection_, screen_->root, XCB_CW_CURSOR, &cursor);
    synchronize();
}

void X11TestClient::setFontCursor(std::uint16_t glyph, std::uint32_t foreground, std::uint32_t background) {
    constexpr std::string_view name = "cursor";
    const auto part = [](std::uint32_t color, int shift) {
        return static_cast<std::uint16_t>((color >> shift & 0xFF) * 0x101);
    };
    const xcb_font_t font = xcb_generate_id(connection_);
    const xcb_cursor_t cursor = xcb_generate_id(connection_);
    xcb_open_font(connection_, font, name.size(), name.data());
    xcb_create_glyph_cursor(connection_, cursor, font, font, glyph, static_cast<std::uint16_t>(glyph + 1),
                            part(foreground, 16), part(foreground, 8), part(foreground, 0), part(background, 16),
                            part(background, 8), part(background, 0));
    xcb_close_font(connection_, font);
    xcb_change_window_attributes(connection_, screen_->root, XCB_CW_CURSOR, &cursor);
    synchronize();
}

void X11TestClient::resizeScreen(std::uint16_t width, std::uint16_t height, std::uint32_t refreshRate) {
    const auto resources = owned(xcb_randr_get_screen_resources_reply(
        connection_, xcb_randr_get_screen_resources(connection_, screen_->root), nullptr));
    const xcb_randr_crtc_t crtc = xcb_randr_get_screen_resources_crtcs(resources.get())[0];
    const xcb_randr_output_t output = xcb_randr_get_screen_resources_outputs(resources.get())[0];
    const std::string name = std::to_string(width) + "x" + std::to_string(height) + "@" + std::to_string(refreshRate);
    xcb_randr_mode_info_t mode{};
    mode.width = width;
    mode.height = height;
    mode.dot_clock = refreshRate * width * height;
    mode.htotal = width;
    mode.vtotal = height;
    mode.name_len = static_cast<std::uint16_t>(name.size());
    const auto created = owned(xcb_randr_create_mode_reply(
        connection_,
        xcb_randr_create_mode(connection_, screen_->root, mode, static_cast<std::uint32_t>(name.size()), name.c_str()),
        nullptr));
    if (!created) {
        throw std::runtime_error("the X server takes no new mode");
    }
    xcb_randr_add_output_mode(connection_, output, created->mode);
    const auto set = [&](xcb_randr_mode_t id, std::uint32_t outputs) {
        return owned(xcb_randr_set_crtc_config_reply(
            connection_,
            xcb_randr_set_crtc_config(connection_, crtc, XCB_CURRENT_TIME, XCB_CURRENT_TIME, 0, 0, id,
                                      XCB_RANDR_ROTATION_ROTATE_0, outputs, &output),
            nullptr));
    };
    set(XCB_NONE, 0);
    xcb_randr_set_screen_size(connection_, screen_->root, width, height, 100, 100);
    const auto changed = set(created->mode, 1);
    if (!changed || changed->status != XCB_RANDR_SET_CONFIG_SUCCESS) {
        throw std::runtime_error("the X server did not change its mode");
    }
}

std::uint32_t X11TestClient::output() {
    const auto resources = owned(xcb_randr_get_screen_resources_reply(
        connection_, xcb_randr_get_screen_resources(connection_, screen_->root), nullptr));
    return xcb_randr_get_screen_resources_outputs(resources.get())[0];
}

// XCB 1.15 can't put this request together by itself: it stops the process at an assertion.
void X11TestClient::setMonitor(const std::string& name, const TestRect& rect, bool isPrimary, bool takesOutput) {
    struct {
        xcb_randr_set_monitor_request_t head;
        xcb_randr_monitor_info_t info;
        xcb_randr_output_t output;
    } request{{.window = screen_->root},
              {.name = atom(name),
               .primary = isPrimary,
               .nOutput = static_cast<std::uint16_t>(takesOutput),
               .x = rect.x,
               .y = rect.y,
               .width = rect.width,
               .height = rect.height},
              output()};
    const xcb_protocol_request_t protocol{
        .count = 1, .ext = &xcb_randr_id, .opcode = XCB_RANDR_SET_MONITOR, .isvoid = 1};
    // XCB uses the two vectors before the first for a prefix of its own.
    iovec parts[3]{{}, {}, {&request, sizeof request - (takesOutput ? 0 : sizeof request.output)}};
    xcb_send_request(connection_, 0, parts + 2, &protocol);
    synchronize();
}

void X11TestClient::removeMonitor(const std::string& name) {
    xcb_randr_delete_monitor(connection_, screen_->root, atom(name));
    synchronize();
}

void X11TestClient::setEDID(const std::vector<std::uint8_t>& bytes) {
    xcb_randr_change_output_property(connection_, output(), atom("EDID"), XCB_ATOM_INTEGER, 8, XCB_PROP_MODE_REPLACE,
                                     static_cast<std::uint32_t>(bytes.size()), bytes.data());
    synchronize();
}

std::uint32_t X11TestClient::atom(const std::string& name) {
    const auto query = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const auto reply = owned(xcb_intern_atom_reply(connection_, query, nullptr));
    return reply ? reply->atom : 0;
}

}  // namespace zorvane
