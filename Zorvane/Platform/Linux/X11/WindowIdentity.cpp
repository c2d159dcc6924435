#include "Zorvane/Platform/Linux/X11/WindowIdentity.hpp"

#include <xcb/xcb.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

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
constexpr std::size_t mostPartsOfFrame = 256;

std::vector<xcb_window_t> childrenIn(const TreeReply& reply) {
    if (!reply) {
        return {};
    }
    const xcb_window_t* const children = xcb_query_tree_children(reply.get());
    return {children, children + xcb_query_tree_children_length(reply.get())};
}

constexpr std::uint32_t propertyEvents = XCB_EVENT_MASK_PROPERTY_CHANGE;
constexpr std::uint32_t allEvents = propertyEvents | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;

void listen(const XConnection& connection, xcb_window_t window, std::uint32_t events) {
    xcb_change_window_attributes(connection.get(), window, XCB_CW_EVENT_MASK, &events);
}

/// The window manager marks the windows that it takes care of.
bool holdsMark(const XPropertyQuery& state) {
    return state.answer().type() != 0;
}

/// The bits of a window's number that tell which program made it.
std::uint32_t makerOf(const XConnection& connection, xcb_window_t window) {
    return window & ~xcb_get_setup(connection.get())->resource_id_mask;
}

/// Finds the applications' windows in a frame. Until the window manager has marked them, they are told by having been
/// made by another program than the frame.
class ClientSearch {
  public:
    ClientSearch(const XConnection& connection, const WindowAtoms& atoms, xcb_window_t frame)
        : connection_(connection), atoms_(atoms), frame_(frame) {}

    /// `level` is what lies right in the frame.
    void run(std::vector<xcb_window_t> level) {
        for (int depth = 0; depth < deepestClient && !level.empty() && !hasMarked_; ++depth) {
            level.resize(std::min(level.size(), mostPartsOfFrame));
            level = lookInto(level);
        }
    }

    /// Marked ones, and those of other programs: a window that has just come into a frame isn't marked yet.
    const std::vector<xcb_window_t>& clients() const { return clients_; }
    bool hasMarked() const { return hasMarked_; }

  private:
    /// Returns what lies in those of these windows that belong to the frame. All questions are asked at once.
    std::vector<xcb_window_t> lookInto(const std::vector<xcb_window_t>& windows) {
        std::vector<XPropertyQuery> states;
        std::vector<xcb_query_tree_cookie_t> trees;
        for (const xcb_window_t window : windows) {
            listen(connection_, window, allEvents);
            states.emplace_back(connection_, window, atoms_.managedState);
            trees.push_back(xcb_query_tree(connection_.get(), window));
        }
        std::vector<xcb_window_t> within;
        for (std::size_t index = 0; index < windows.size(); ++index) {
            const TreeReply tree(xcb_query_tree_reply(connection_.get(), trees[index], nullptr));
            const bool isMarked = holdsMark(states[index]);
            hasMarked_ |= isMarked;
            if (isMarked || makerOf(connection_, windows[index]) != makerOf(connection_, frame_)) {
                clients_.push_back(windows[index]);
                listen(connection_, windows[index], propertyEvents);  // what it does inside is its own affair
            } else {
                std::ranges::copy(childrenIn(tree), std::back_inserter(within));
            }
        }
        return within;
    }

    const XConnection& connection_;
    const WindowAtoms& atoms_;
    const xcb_window_t frame_;
    std::vector<xcb_window_t> clients_;
    bool hasMarked_ = false;
};

SCWindow owned(xcb_window_t window, const WindowOwnerQuery& owner) {
    SCWindow identity{.windowID = window};
    if (const std::int32_t processID = owner.processID()) {
        identity.owningApplication = SCRunningApplication{.processID = processID};
    }
    return identity;
}

}  // namespace

// All questions about the window itself are asked at once; under a window manager that frames nothing, there are no
// others. Redirection tells no frame for sure: some window managers leave it to the server to except their own windows.
std::vector<SCWindow> identifyWindow(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t topLevel) {
    xcb_connection_t* const c = connection.get();
    listen(connection, topLevel, allEvents);
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
    const std::uint32_t check = windowManager.answer().numberOr(XCB_NONE);
    if (!attributes || !within) {
        return {};
    }
    if (isManaged) {
        listen(connection, topLevel, propertyEvents);
        return {itself};
    }
    ClientSearch search(connection, atoms, topLevel);
    search.run(childrenIn(within));
    const bool isOfWindowManager = check != XCB_NONE && makerOf(connection, check) == makerOf(connection, topLevel);
    const bool mayBeFrame = isOfWindowManager || attributes->override_redirect;
    const bool isFrame = search.hasMarked() || (mayBeFrame && !search.clients().empty());
    std::vector<SCWindow> identities;
    if (!isFrame) {
        identities.push_back(itself);
    }
    for (const xcb_window_t client : search.clients()) {
        identities.push_back(owned(client, WindowOwnerQuery(connection, atoms, client)));
    }
    return identities;
}

bool tellsIdentity(const WindowAtoms& atoms, std::uint32_t property) {
    return property == atoms.processID || property == XCB_ATOM_WM_CLIENT_MACHINE || property == atoms.managedState;
}

std::uint32_t topLevelOf(const XConnection& connection, std::uint32_t window) {
    for (;;) {
        const auto query = xcb_query_tree(connection.get(), window);
        const TreeReply reply(xcb_query_tree_reply(connection.get(), query, nullptr));
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
