#include "Zorvane/Platform/Linux/X11/CursorOverlay.hpp"

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include "Zorvane/Platform/Linux/X11/CursorImage.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

using CursorReply = XReply<xcb_xfixes_get_cursor_image_reply_t>;

CursorImage imageIn(const xcb_xfixes_get_cursor_image_reply_t& reply) {
    const auto count = static_cast<std::size_t>(xcb_xfixes_get_cursor_image_cursor_image_length(&reply));
    return {.pixels = {xcb_xfixes_get_cursor_image_cursor_image(&reply), count},
            .width = reply.width,
            .height = reply.height};
}

}  // namespace

CursorOverlay::Appearance CursorOverlay::appearance(const xcb_xfixes_get_cursor_image_reply_t& reply) const {
    const std::int32_t x = reply.x - reply.xhot;
    const std::int32_t y = reply.y - reply.yhot;
    const PixelRect visible = area_.fromRoot({x, y, reply.width, reply.height});
    return visible.isEmpty() ? Appearance{} : Appearance{reply.cursor_serial, x, y, visible};
}

bool CursorOverlay::hasChanged() {
    request();
    const CursorReply reply(xcb_xfixes_get_cursor_image_reply(connection_.get(), {request_}, nullptr));
    return reply && appearance(*reply) != drawn_;
}

void CursorOverlay::request() {
    request_ = xcb_xfixes_get_cursor_image(connection_.get()).sequence;
}

RowSpan CursorOverlay::receiveAndDraw(CVPixelBuffer& picture) {
    const CursorReply reply(xcb_xfixes_get_cursor_image_reply(connection_.get(), {request_}, nullptr));
    if (!reply) {
        return {};
    }
    drawn_ = appearance(*reply);
    if (drawn_.visible.isEmpty()) {
        return {};
    }
    drawCursor(imageIn(*reply), drawn_.x - area_.originX, drawn_.y - area_.originY, drawn_.visible, picture);
    return {drawn_.visible.y, drawn_.visible.maxY()};
}

}  // namespace zorvane
