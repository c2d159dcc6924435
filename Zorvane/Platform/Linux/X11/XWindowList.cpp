#include "Zorvane/Platform/Linux/X11/XWindowList.hpp"

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

using PropertyReply = XReply<xcb_get_property_reply_t>;

constexpr std::int32_t normalLayer = 0;
constexpr std::int32_t floatingLayer = 3;
constexpr std::int32_t dockLayer = 20;
constexpr std::int32_t desktopLayer = std::numeric_limits<std::int32_t>::min() + 20;

xcb_get_property_cookie_t askFor(const XConnection& connection, xcb_window_t window, xcb_atom_t property) {
    constexpr std::uint32_t wordsAtMost = 1 << 16;
    return xcb_get_property(connection.get(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, wordsAtMost);
}

PropertyReply answer(const XConnection& connection, xcb_get_property_cookie_t query) {
    return PropertyReply(xcb_get_property_reply(connection.get(), query, nullptr));
}

std::vector<std::uint32_t> numbersIn(const PropertyReply& reply) {
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* numbers = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {numbers, numbers + xcb_get_property_value_length(reply.get()) / static_cast<int>(sizeof *numbers)};
}

std::string textIn(const PropertyReply& reply) {
    if (!reply || reply->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

/// The older properties hold Latin-1.
std::string utf8FromLatin1(std::string_view text) {
    std::string utf8;
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if (code < 0x80) {
            utf8 += letter;
        } else {
            utf8 += static_cast<char>(0xC0 | code >> 6);
            utf8 += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return utf8;
}

bool contains(const std::vector<std::uint32_t>& numbers, std::uint32_t number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

/// All questions about one window. They are sent for all windows before the first answer is waited for.
class WindowQuery {
  public:
    WindowQuery(const XConnection& connection, const WindowAtoms& atoms, xcb_window_t window)
        : connection_(connection),
          atoms_(atoms),
          window_(window),
          geometry_(xcb_get_geometry(connection.get(), window)),
          position_(xcb_translate_coordinates(connection.get(), window, connection.root(), 0, 0)),
          attributes_(xcb_get_window_attributes(connection.get(), window)),
          processID_(askFor(connection, window, atoms.processID)),
          name_(askFor(connection, window, atoms.name)),
          oldName_(askFor(connection, window, XCB_ATOM_WM_NAME)),
          class_(askFor(connection, window, XCB_ATOM_WM_CLASS)),
          type_(askFor(connection, window, atoms.windowType)),
          state_(askFor(connection, window, atoms.state)),
          frameExtents_(askFor(connection, window, atoms.frameExtents)),
          shadowExtents_(askFor(connection, window, atoms.shadowExtents)) {}

    /// Nothing if the window went away, or is one that only takes input.
    std::optional<SCWindow> answers() const {
        const auto state = numbersIn(answer(connection_, state_));
        SCWindow window{
            .windowID = window_, .title = title(), .windowLayer = layer(state), .owningApplication = application()};
        const auto bounds = frame();
        const auto shown = isShown();
        if (!bounds || !shown) {
            return std::nullopt;
        }
        window.frame = *bounds;
        window.isOnScreen = *shown && !contains(state, atoms_.stateHidden);
        return window;
    }

  private:
    std::optional<CGRect> frame() const {
        const XReply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(connection_.get(), geometry_, nullptr));
        const XReply<xcb_translate_coordinates_reply_t> place(
            xcb_translate_coordinates_reply(connection_.get(), position_, nullptr));
        const auto decoration = numbersIn(answer(connection_, frameExtents_));
        const auto shadow = numbersIn(answer(connection_, shadowExtents_));
        if (!size || !place) {
            return std::nullopt;
        }
        auto frame = CGRect::make(place->dst_x, place->dst_y, size->width, size->height);
        return grownBy(grownBy(frame, decoration, 1), shadow, -1);
    }

    /// `extents`: left, right, top, bottom.
    static CGRect grownBy(const CGRect& rect, const std::vector<std::uint32_t>& extents, double sign) {
        if (extents.size() < 4) {
            return rect;
        }
        return CGRect::make(rect.origin.x - sign * extents[0], rect.origin.y - sign * extents[2],
                            rect.size.width + sign * (static_cast<double>(extents[0]) + extents[1]),
                            rect.size.height + sign * (static_cast<double>(extents[2]) + extents[3]));
    }

    std::optional<bool> isShown() const {
        const XReply<xcb_get_window_attributes_reply_t> reply(
            xcb_get_window_attributes_reply(connection_.get(), attributes_, nullptr));
        if (!reply || reply->_class == XCB_WINDOW_CLASS_INPUT_ONLY) {
            return std::nullopt;
        }
        return reply->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    std::optional<std::string> title() const {
        const auto name = textIn(answer(connection_, name_));
        const auto oldName = answer(connection_, oldName_);
        const bool isLatin1 = oldName && oldName->type == XCB_ATOM_STRING;
        const auto title = !name.empty() ? name : isLatin1 ? utf8FromLatin1(textIn(oldName)) : textIn(oldName);
        return title.empty() ? std::nullopt : std::optional(title);
    }

    std::int32_t layer(const std::vector<std::uint32_t>& state) const {
        const auto types = numbersIn(answer(connection_, type_));
        if (contains(types, atoms_.typeDesktop)) {
            return desktopLayer;
        }
        if (contains(types, atoms_.typeDock)) {
            return dockLayer;
        }
        return contains(state, atoms_.stateAbove) ? floatingLayer : normalLayer;
    }

    std::optional<SCRunningApplication> application() const {
        const auto processID = numbersIn(answer(connection_, processID_));
        const std::string instanceAndClass = textIn(answer(connection_, class_));
        if (processID.empty()) {
            return std::nullopt;
        }
        const std::string name = secondString(instanceAndClass);
        return SCRunningApplication{.processID = static_cast<std::int32_t>(processID.front()),
                                    .bundleIdentifier = name,
                                    .applicationName = name};
    }

    /// WM_CLASS holds two strings, each with a zero byte behind it.
    static std::string secondString(std::string_view text) {
        text.remove_prefix(std::min(text.find('\0') + 1, text.size()));
        return std::string(text.substr(0, text.find('\0')));
    }

    const XConnection& connection_;
    const WindowAtoms& atoms_;
    xcb_window_t window_;
    xcb_get_geometry_cookie_t geometry_;
    xcb_translate_coordinates_cookie_t position_;
    xcb_get_window_attributes_cookie_t attributes_;
    xcb_get_property_cookie_t processID_;
    xcb_get_property_cookie_t name_;
    xcb_get_property_cookie_t oldName_;
    xcb_get_property_cookie_t class_;
    xcb_get_property_cookie_t type_;
    xcb_get_property_cookie_t state_;
    xcb_get_property_cookie_t frameExtents_;
    xcb_get_property_cookie_t shadowExtents_;
};

std::vector<xcb_window_t> childrenOfRoot(const XConnection& connection) {
    const auto query = xcb_query_tree(connection.get(), connection.root());
    const XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection.get(), query, nullptr));
    if (!tree) {
        return {};
    }
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    return {children, children + xcb_query_tree_children_length(tree.get())};
}

/// Front to back.
std::vector<xcb_window_t> windowIDs(const XConnection& connection, const WindowAtoms& atoms) {
    const auto list = answer(connection, askFor(connection, connection.root(), atoms.clientListStacking));
    const bool hasWindowManager = list && list->type == XCB_ATOM_WINDOW;
    auto windows = hasWindowManager ? numbersIn(list) : childrenOfRoot(connection);
    std::reverse(windows.begin(), windows.end());
    return windows;
}

bool isIn(SCShareableContentScope scope, const SCWindow& window) {
    return scope == SCShareableContentScope::all || (window.isOnScreen && window.windowLayer != desktopLayer);
}

}  // namespace

std::vector<SCWindow> readWindows(const XConnection& connection, SCShareableContentScope scope) {
    const auto atoms = WindowAtoms::intern(connection);
    std::vector<WindowQuery> queries;
    for (const xcb_window_t window : windowIDs(connection, atoms)) {
        queries.emplace_back(connection, atoms, window);
    }
    std::vector<SCWindow> windows;
    for (const WindowQuery& query : queries) {
        if (auto window = query.answers(); window && isIn(scope, *window)) {
            windows.push_back(std::move(*window));
        }
    }
    connection.requireAlive();
    return windows;
}

}  // namespace zorvane
