#include "Zorvane/Platform/Linux/X11/XWindowList.hpp"

#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XWindowOrder.hpp"
#include "Zorvane/Platform/Linux/X11/XWindowQuery.hpp"

namespace zorvane {

std::vector<XWindow> readWindows(const XConnection& connection) {
    const auto atoms = WindowAtoms::intern(connection);
    const auto order = XWindowOrder::read(connection, atoms);
    std::vector<XWindowQuery> queries;
    queries.reserve(order.windowIDs.size());
    for (const std::uint32_t window : order.windowIDs) {
        queries.emplace_back(connection, atoms, window, order.currentDesktop);
    }
    std::vector<XWindow> windows;
    for (const XWindowQuery& query : queries) {
        if (auto window = query.answer(); window && order.lists(*window)) {
            windows.push_back(std::move(*window));
        }
    }
    connection.requireAlive();
    return windows;
}

}  // namespace zorvane
