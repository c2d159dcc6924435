#include "Zorvane/Platform/Linux/X11/WindowRepainting.hpp"

#include <xcb/xcb.h>

#include <vector>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

/// No program has more in one place, unless it wants to be waited for.
constexpr std::size_t mostWindows = 256;

struct WindowPart {
    xcb_window_t window;
    PixelRect rect;  // in its own coordinates
};

std::uint32_t clear(const XConnection& connection, const WindowPart& part) {
    return xcb_clear_area(connection.get(), 1, part.window, static_cast<std::int16_t>(part.rect.x),
                          static_cast<std::int16_t>(part.rect.y), static_cast<std::uint16_t>(part.rect.width),
                          static_cast<std::uint16_t>(part.rect.height))
        .sequence;
}

/// Adds the child if it lies where the parent is to be painted.
void addChild(const XConnection& connection, const WindowPart& parent, xcb_window_t child,
              std::vector<WindowPart>& parts) {
    const XReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection.get(), xcb_get_geometry(connection.get(), child), nullptr));
    if (!geometry) {
        return;
    }
    const PixelRect inside{geometry->x + geometry->border_width, geometry->y + geometry->border_width, geometry->width,
                           geometry->height};
    const PixelRect share = intersection(inside, parent.rect);
    if (!share.isEmpty()) {
        parts.push_back({child, share.movedBy(-inside.x, -inside.y)});
    }
}

}  // namespace

std::uint32_t askToPaint(const XConnection& connection, std::uint32_t window, const PixelRect& rect) {
    std::vector<WindowPart> parts{{window, rect}};
    const std::uint32_t first = clear(connection, parts.front());
    for (std::size_t index = 0; index < parts.size(); ++index) {
        const WindowPart parent = parts[index];
        const auto query = xcb_query_tree(connection.get(), parent.window);
        const XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection.get(), query, nullptr));
        for (int child = 0; tree && child < xcb_query_tree_children_length(tree.get()); ++child) {
            if (parts.size() < mostWindows) {
                addChild(connection, parent, xcb_query_tree_children(tree.get())[child], parts);
            }
        }
        if (index > 0) {
            clear(connection, parent);
        }
    }
    return first;
}

}  // namespace zorvane
