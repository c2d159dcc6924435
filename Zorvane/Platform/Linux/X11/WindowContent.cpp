#include "Zorvane/Platform/Linux/X11/WindowContent.hpp"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/render.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

bool succeeded(const XConnection& connection, xcb_void_cookie_t request) {
    const XReply<xcb_generic_error_t> error(xcb_request_check(connection.get(), request));
    return !error && xcb_connection_has_error(connection.get()) == 0;
}

}  // namespace

WindowContent::~WindowContent() {
    ignorePainting();
    dropPixmap();
    dropShape();
}

void WindowContent::watchPainting() {
    if (damage_ == XCB_NONE) {
        damage_ = xcb_generate_id(connection_.get());
        xcb_damage_create(connection_.get(), damage_, window_, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    }
}

void WindowContent::ignorePainting() {
    if (damage_ != XCB_NONE) {
        xcb_damage_destroy(connection_.get(), damage_);
        damage_ = XCB_NONE;
    }
}

void WindowContent::acknowledgePainting() {
    if (damage_ != XCB_NONE) {
        xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, XCB_NONE);
    }
}

void WindowContent::takePixmap(PictureFormat format, const PixelRect& bounds) {
    dropPixmap();
    if (format.number == XCB_NONE) {
        return;
    }
    const xcb_pixmap_t pixmap = xcb_generate_id(connection_.get());
    const auto naming = xcb_composite_name_window_pixmap_checked(connection_.get(), window_, pixmap);
    const auto query = xcb_get_geometry(connection_.get(), pixmap);
    const XReply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(connection_.get(), query, nullptr));
    if (!succeeded(connection_, naming)) {
        return;
    }
    pixmap_ = pixmap;
    if (!size || size->width != bounds.width || size->height != bounds.height) {
        return;
    }
    const xcb_render_picture_t picture = xcb_generate_id(connection_.get());
    if (succeeded(connection_,
                  xcb_render_create_picture_checked(connection_.get(), picture, pixmap, format.number, 0, nullptr))) {
        picture_ = picture;
    }
}

void WindowContent::dropPixmap() {
    if (picture_ != XCB_NONE) {
        xcb_render_free_picture(connection_.get(), picture_);
        picture_ = XCB_NONE;
    }
    if (pixmap_ != XCB_NONE) {
        xcb_free_pixmap(connection_.get(), pixmap_);
        pixmap_ = XCB_NONE;
    }
}

void WindowContent::takeShape() {
    dropShape();
    if (!connection_.extensions().shape.isPresent) {
        return;
    }
    xcb_shape_select_input(connection_.get(), window_, 1);
    const auto query = xcb_shape_query_extents(connection_.get(), window_);
    const XReply<xcb_shape_query_extents_reply_t> reply(
        xcb_shape_query_extents_reply(connection_.get(), query, nullptr));
    if (reply && reply->bounding_shaped) {
        shape_ = xcb_generate_id(connection_.get());
        xcb_xfixes_create_region_from_window(connection_.get(), shape_, window_, XCB_SHAPE_SK_BOUNDING);
    }
}

void WindowContent::dropShape() {
    if (shape_ != XCB_NONE) {
        xcb_xfixes_destroy_region(connection_.get(), shape_);
        shape_ = XCB_NONE;
    }
}

}  // namespace zorvane
