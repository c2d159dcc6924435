#include "Zorvane/Platform/Linux/X11/XWindowOrder.hpp"

#include <xcb/xcb.h>

#include <algorithm>
#include <unordered_set>

#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XProperty.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

std::vector<std::uint32_t> childrenOfRoot(const XConnection& connection) {
    const auto query = xcb_query_tree(connection.get(), connection.root());
    const XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection.get(), query, nullptr));
    if (!tree) {
        return {};
    }
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    return {children, children + xcb_query_tree_children_length(tree.get())};
}

/// The check window bears its own number for as long as the window manager runs.
bool isStale(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t check) {
    return check != 0 && XPropertyQuery(connection, check, atoms.windowManagerCheck).answer().numberOr(0) != check;
}

}  // namespace

XWindowOrder XWindowOrder::read(const XConnection& connection, const WindowAtoms& atoms) {
    constexpr std::uint32_t mostBytes = 1 << 18;
    const XPropertyQuery listQuery(connection, connection.root(), atoms.clientListStacking, mostBytes);
    const XPropertyQuery checkQuery(connection, connection.root(), atoms.windowManagerCheck);
    const XPropertyQuery desktopQuery(connection, connection.root(), atoms.currentDesktop);
    const XPropertyQuery activeQuery(connection, connection.root(), atoms.activeWindow);
    const XProperty list = listQuery.answer();
    const auto desktop = desktopQuery.answer().numbers();

    XWindowOrder order;
    order.windowManagerCheck = checkQuery.answer().numberOr(0);
    order.activeWindow = activeQuery.answer().numberOr(0);
    order.hasWindowManager = list.type() == XCB_ATOM_WINDOW && !isStale(connection, atoms, order.windowManagerCheck);
    if (order.hasWindowManager) {
        order.windowIDs = list.numbers();
        order.currentDesktop = desktop.empty() ? std::nullopt : std::optional(desktop.front());
    } else {
        order.windowIDs = childrenOfRoot(connection);
        order.activeWindow = 0;
        order.windowManagerCheck = 0;
    }
    std::unordered_set<std::uint32_t> seen{connection.root()};
    std::erase_if(order.windowIDs, [&](std::uint32_t window) { return !seen.insert(window).second; });
    std::reverse(order.windowIDs.begin(), order.windowIDs.end());
    return order;
}

}  // namespace zorvane
