#include "Zorvane/Platform/Linux/X11/WindowIdentity.hpp"

#include <xcb/xcb.h>

#include <algorithm>
#include <vector>

#include "Zorvane/Platform/Linux/X11/WindowOwner.hpp"
#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XProperty.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

using TreeReply = XReply<xcb_query_tree_reply_t>;

/// Window managers put an application's window into one or two of their own.
constexpr int deepestClient = 3;
constexpr int mostPartsOfFrame = 64;

TreeReply tree(const XConnection& connection, xcb_window_t window) {
    return TreeReply(xcb_query_tree_reply(connection.get(), xcb_query_tree(connection.get(), window), nullptr));
}

std::vector<xcb_window_t> childrenIn(const TreeReply& reply) {
    if (!reply) {
        return {};
    }
    const xcb_window_t* const children = xcb_query_tree_children(reply.get());
    const int count = std::min(xcb_query_tree_children_length(reply.get()), mostPartsOfFrame);
    return {children, children + count};
}

/// The window manager marks the windows that it takes care of.
bool holdsMark(const XPropertyQuery& state) {
    return state.answer().type() != 0;
}

/// The bits of a window's number that tell which program made it.
std::uint32_t makerOf(const XConnection& connection, xcb_window_t window) {
    return window & ~xcb_get_setup(connection.get())->resource_id_mask;
}

/// What the window that is searched may be: one that a window manager has put around another, or any.
enum class Container : std::uint8_t { frame, unknown };

/// Finds the application's window in a frame. Until the window manager has marked it, it is told by having been made by
/// another program than the frame. What isn't known to be a frame may hold windows of other programs for other reasons.
class ClientSearch {
  public:
    ClientSearch(const XConnection& connection, const WindowAtoms& atoms, xcb_window_t topLevel, Container container)
        : connection_(connection), atoms_(atoms), topLevel_(topLevel), container_(container) {}

    /// 0 if there is none. `level` is what lies right in the container.
    xcb_window_t clientWithin(std::vector<xcb_window_t> level) {
        for (int depth = 0; depth < deepestClient && !level.empty(); ++depth) {
            for (const xcb_window_t window : level) {
                if (isManaged(window)) {
                    return window;
                }
                if (foreign_ == XCB_NONE && isForeign(window)) {
                    foreign_ = window;
                }
            }
            level = childrenOf(level);
        }
        return foreign_;
    }

  private:
    bool isManaged(xcb_window_t window) const {
        return holdsMark(XPropertyQuery(connection_, window, atoms_.managedState));
    }

    bool isForeign(xcb_window_t window) const {
        return container_ == Container::frame && makerOf(connection_, window) != makerOf(connection_, topLevel_);
    }

    std::vector<xcb_window_t> childrenOf(const std::vector<xcb_window_t>& windows) const {
        std::vector<xcb_window_t> all;
        for (const xcb_window_t window : windows) {
            const auto children = childrenIn(tree(connection_, window));
            all.insert(all.end(), children.begin(), children.end());
        }
        all.resize(std::min(all.size(), static_cast<std::size_t>(mostPartsOfFrame)));
        return all;
    }

    const XConnection& connection_;
    const WindowAtoms& atoms_;
    const xcb_window_t topLevel_;
    const Container container_;
    xcb_window_t foreign_ = XCB_NONE;
};

SCWindow owned(xcb_window_t window, const WindowOwnerQuery& owner) {
    SCWindow identity{.windowID = window};
    if (const std::int32_t processID = owner.processID()) {
        identity.owningApplication = SCRunningApplication{.processID = processID};
    }
    return identity;
}

}  // namespace

// All questions about the window itself are asked at once; most windows have no frame.
std::optional<SCWindow> identifyWindow(const XConnection& connection, const WindowAtoms& atoms,
                                       std::uint32_t topLevel) {
    xcb_connection_t* const c = connection.get();
    const XPropertyQuery state(connection, topLevel, atoms.managedState);
    const auto attributesQuery = xcb_get_window_attributes(c, topLevel);
    const auto treeQuery = xcb_query_tree(c, topLevel);
    const WindowOwnerQuery owner(connection, atoms, topLevel);
    const XPropertyQuery windowManager(connection, connection.root(), atoms.windowManagerCheck);
    const bool isManaged = holdsMark(state);
    const XReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(c, attributesQuery, nullptr));
    const TreeReply within(xcb_query_tree_reply(c, treeQuery, nullptr));
    const SCWindow itself = owned(topLevel, owner);
    const auto check = windowManager.answer().numberOr(XCB_NONE);
    if (!attributes || !within) {
        return std::nullopt;
    }
    if (isManaged) {
        return itself;
    }
    const bool isOfWindowManager = check != XCB_NONE && makerOf(connection, check) == makerOf(connection, topLevel);
    const auto container = attributes->override_redirect || isOfWindowManager ? Container::frame : Container::unknown;
    const xcb_window_t client = ClientSearch(connection, atoms, topLevel, container).clientWithin(childrenIn(within));
    if (client == XCB_NONE) {
        return itself;
    }
    return owned(client, WindowOwnerQuery(connection, atoms, client));
}

std::uint32_t topLevelOf(const XConnection& connection, std::uint32_t window) {
    for (;;) {
        const TreeReply reply = tree(connection, window);
        if (!reply || reply->parent == XCB_NONE) {
            return XCB_NONE;
        }
        if (reply->parent == connection.root()) {
            return window;
        }
        window = reply->parent;
    }
}

}  // namespace zorvane
