#include "Zorvane/Platform/Linux/X11/ScreenCanvas.hpp"

#include <xcb/render.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <algorithm>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {
namespace {

std::int16_t place(std::int32_t value) {
    return static_cast<std::int16_t>(value);
}

std::uint16_t size(std::int32_t value) {
    return static_cast<std::uint16_t>(value);
}

}  // namespace

ScreenCanvas::ScreenCanvas(XConnection& connection, const ScreenArea& area, std::uint32_t format, Behind behind)
    : connection_(connection),
      area_(area),
      pixmap_(xcb_generate_id(connection.get())),
      picture_(xcb_generate_id(connection.get())) {
    xcb_connection_t* const c = connection.get();
    xcb_create_pixmap(c, connection.screen().root_depth, pixmap_, connection.root(), size(area.width),
                      size(area.height));
    xcb_render_create_picture(c, picture_, pixmap_, format, 0, nullptr);
    blacken({area.originX, area.originY, area.width, area.height});
    if (behind == Behind::desktop) {
        backdrop_.emplace(connection, area, format);
        backdrop_->read();
    }
}

// What an opaque window hides isn't drawn first.
void ScreenCanvas::draw(const WindowStack& stack, const PixelRect& rect) {
    const auto& windows = stack.windows();
    const auto hiding = std::find_if(windows.rbegin(), windows.rend(), [&](const auto& window) {
        return window->isOpaque() && window->bounds.contains(rect);
    });
    if (hiding == windows.rend()) {
        drawBackdrop(rect);
    }
    for (auto window = hiding == windows.rend() ? windows.begin() : hiding.base() - 1; window != windows.end();
         ++window) {
        drawWindow(**window, rect);
    }
}

void ScreenCanvas::drawBackdrop(const PixelRect& rect) {
    if (!backdrop_) {
        blacken(rect);
        return;
    }
    const PixelRect here = rect.movedBy(-area_.originX, -area_.originY);
    xcb_render_composite(connection_.get(), XCB_RENDER_PICT_OP_SRC, backdrop_->picture(), XCB_NONE, picture_,
                         place(here.x), place(here.y), 0, 0, place(here.x), place(here.y), size(here.width),
                         size(here.height));
}

void ScreenCanvas::drawWindow(const StackedWindow& window, const PixelRect& rect) {
    const PixelRect part = intersection(window.bounds, rect);
    if (!window.isVisible() || !window.content->hasPicture() || part.isEmpty()) {
        return;
    }
    if (window.content->shape()) {
        xcb_xfixes_set_picture_clip_region(connection_.get(), picture_, window.content->shape(),
                                           place(window.inside().x - area_.originX),
                                           place(window.inside().y - area_.originY));
    }
    xcb_render_composite(connection_.get(), window.format.hasAlpha ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC,
                         window.content->picture(), XCB_NONE, picture_, place(part.x - window.bounds.x),
                         place(part.y - window.bounds.y), 0, 0, place(part.x - area_.originX),
                         place(part.y - area_.originY), size(part.width), size(part.height));
    for (const PixelRect& veiled : window.veil.parts()) {
        blacken(intersection(veiled.movedBy(window.inside().x, window.inside().y), part));
    }
    if (window.content->shape()) {
        xcb_xfixes_set_picture_clip_region(connection_.get(), picture_, XCB_NONE, 0, 0);
    }
}

void ScreenCanvas::blacken(const PixelRect& rect) {
    constexpr xcb_render_color_t black{0, 0, 0, 0xFFFF};
    if (!rect.isEmpty()) {
        const xcb_rectangle_t here{place(rect.x - area_.originX), place(rect.y - area_.originY), size(rect.width),
                                   size(rect.height)};
        xcb_render_fill_rectangles(connection_.get(), XCB_RENDER_PICT_OP_SRC, picture_, black, 1, &here);
    }
}

}  // namespace zorvane
