#include "Zorvane/Platform/Linux/X11/ScreenBackdrop.hpp"

#include <xcb/composite.h>
#include <xcb/render.h>
#include <xcb/xcb.h>

#include <array>

#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XProperty.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

/// A window like the root window's background, which nobody sees: it is at the bottom, and drawn to a pixmap of its own
/// only. Gone when the object goes.
class BackgroundWindow {
  public:
    BackgroundWindow(XConnection& connection, const ScreenArea& area)
        : connection_(connection), window_(xcb_generate_id(connection.get())) {
        xcb_connection_t* const c = connection.get();
        const std::array<std::uint32_t, 2> values{XCB_BACK_PIXMAP_PARENT_RELATIVE, 1};
        xcb_create_window(c, XCB_COPY_FROM_PARENT, window_, connection.root(), static_cast<std::int16_t>(area.originX),
                          static_cast<std::int16_t>(area.originY), static_cast<std::uint16_t>(area.width),
                          static_cast<std::uint16_t>(area.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values.data());
        // Refused under a compositor, which has all windows for itself; the server then doesn't paint this one.
        const auto redirect = xcb_composite_redirect_window_checked(c, window_, XCB_COMPOSITE_REDIRECT_MANUAL);
        const XReply<xcb_generic_error_t> refused(xcb_request_check(c, redirect));
        const std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(c, window_, XCB_CONFIG_WINDOW_STACK_MODE, &below);
        xcb_map_window(c, window_);
    }
    BackgroundWindow(const BackgroundWindow&) = delete;
    BackgroundWindow& operator=(const BackgroundWindow&) = delete;
    ~BackgroundWindow() { xcb_destroy_window(connection_.get(), window_); }

    xcb_window_t id() const { return window_; }

  private:
    XConnection& connection_;
    const xcb_window_t window_;
};

}  // namespace

ScreenBackdrop::ScreenBackdrop(XConnection& connection, const ScreenArea& area, std::uint32_t format)
    : connection_(connection),
      area_(area),
      format_(format),
      rootPicture_(internAtom(connection, "_XROOTPMAP_ID")),
      otherPicture_(internAtom(connection, "ESETROOT_PMAP_ID")),
      setRoot_(internAtom(connection, "_XSETROOT_ID")),
      pixmap_(xcb_generate_id(connection.get())),
      picture_(xcb_generate_id(connection.get())),
      context_(xcb_generate_id(connection.get())) {
    xcb_connection_t* const c = connection.get();
    xcb_create_pixmap(c, connection.screen().root_depth, pixmap_, connection.root(),
                      static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height));
    xcb_render_create_picture(c, picture_, pixmap_, format, 0, nullptr);
    // In the order of the bits. The foreground is 0, black.
    const std::array<std::uint32_t, 2> values{0, 0};
    xcb_create_gc(c, context_, pixmap_, XCB_GC_FOREGROUND | XCB_GC_GRAPHICS_EXPOSURES, values.data());
    const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height)};
    xcb_poly_fill_rectangle(c, pixmap_, context_, 1, &all);
}

bool ScreenBackdrop::isToldBy(std::uint32_t property) const {
    return property == rootPicture_ || property == otherPicture_ || property == setRoot_;
}

void ScreenBackdrop::read() const {
    if (!copyPicture(rootPicture_) && !copyPicture(otherPicture_)) {
        copyBackground();
    }
}

/// The pixmap tiles the root window. It is another program's and may go at any time.
bool ScreenBackdrop::copyPicture(std::uint32_t property) const {
    xcb_connection_t* const c = connection_.get();
    const XProperty named = XPropertyQuery(connection_, connection_.root(), property).answer();
    const std::uint32_t pixmap = named.numberOr(XCB_NONE);
    if (pixmap == XCB_NONE || named.type() != XCB_ATOM_PIXMAP) {
        return false;
    }
    const xcb_render_picture_t tile = xcb_generate_id(c);
    const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
    const auto creation = xcb_render_create_picture_checked(c, tile, pixmap, format_, XCB_RENDER_CP_REPEAT, &repeat);
    const XReply<xcb_generic_error_t> error(xcb_request_check(c, creation));
    if (error) {
        return false;
    }
    xcb_render_composite(c, XCB_RENDER_PICT_OP_SRC, tile, XCB_NONE, picture_, static_cast<std::int16_t>(area_.originX),
                         static_cast<std::int16_t>(area_.originY), 0, 0, 0, 0, static_cast<std::uint16_t>(area_.width),
                         static_cast<std::uint16_t>(area_.height));
    xcb_render_free_picture(c, tile);
    return true;
}

// A new window holds what the screen shows there, and may get no background: so black comes first.
void ScreenBackdrop::copyBackground() const {
    xcb_connection_t* const c = connection_.get();
    const auto width = static_cast<std::uint16_t>(area_.width);
    const auto height = static_cast<std::uint16_t>(area_.height);
    const xcb_rectangle_t all{0, 0, width, height};
    const BackgroundWindow window(connection_, area_);
    xcb_poly_fill_rectangle(c, window.id(), context_, 1, &all);
    xcb_clear_area(c, 0, window.id(), 0, 0, 0, 0);
    xcb_copy_area(c, window.id(), pixmap_, context_, 0, 0, 0, 0, width, height);
}

}  // namespace zorvane
