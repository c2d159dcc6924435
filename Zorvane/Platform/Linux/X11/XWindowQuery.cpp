#include "Zorvane/Platform/Linux/X11/XWindowQuery.hpp"

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>
#include <utility>

#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"
#include "Zorvane/Platform/Linux/X11/XText.hpp"

namespace zorvane {
namespace {

constexpr CGWindowLevel normalLevel = CGWindowLevelForKey(CGWindowLevelKey::normalWindow);
constexpr CGWindowLevel popUpMenuLevel = CGWindowLevelForKey(CGWindowLevelKey::popUpMenuWindow);
constexpr CGWindowLevel floatingLevel = CGWindowLevelForKey(CGWindowLevelKey::floatingWindow);

constexpr std::array levelsOfTypes{
    std::pair(&WindowAtoms::typeNormal, CGWindowLevelKey::normalWindow),
    std::pair(&WindowAtoms::typeDialog, CGWindowLevelKey::normalWindow),
    std::pair(&WindowAtoms::typeSplash, CGWindowLevelKey::normalWindow),
    std::pair(&WindowAtoms::typeDesktop, CGWindowLevelKey::desktopWindow),
    std::pair(&WindowAtoms::typeDock, CGWindowLevelKey::dockWindow),
    std::pair(&WindowAtoms::typeToolbar, CGWindowLevelKey::tornOffMenuWindow),
    std::pair(&WindowAtoms::typeUtility, CGWindowLevelKey::utilityWindow),
    std::pair(&WindowAtoms::typeMenu, CGWindowLevelKey::popUpMenuWindow),
    std::pair(&WindowAtoms::typeDropdownMenu, CGWindowLevelKey::popUpMenuWindow),
    std::pair(&WindowAtoms::typePopupMenu, CGWindowLevelKey::popUpMenuWindow),
    std::pair(&WindowAtoms::typeTooltip, CGWindowLevelKey::popUpMenuWindow),
    std::pair(&WindowAtoms::typeNotification, CGWindowLevelKey::popUpMenuWindow),
    std::pair(&WindowAtoms::typeCombo, CGWindowLevelKey::popUpMenuWindow),
    std::pair(&WindowAtoms::typeDragged, CGWindowLevelKey::draggingWindow),
};

bool contains(const std::vector<std::uint32_t>& numbers, std::uint32_t number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

/// `extents`: left, right, top, bottom. Ones that no window can have are left alone.
CGRect grownBy(const CGRect& rect, const std::vector<std::uint32_t>& extents, double sign) {
    constexpr std::uint32_t widest = std::numeric_limits<std::int16_t>::max();
    if (extents.size() < 4 || *std::max_element(extents.begin(), extents.end()) > widest) {
        return rect;
    }
    const double width = rect.size.width + sign * (static_cast<double>(extents[0]) + extents[1]);
    const double height = rect.size.height + sign * (static_cast<double>(extents[2]) + extents[3]);
    return CGRect::make(rect.origin.x - sign * extents[0], rect.origin.y - sign * extents[2], std::max(width, 0.0),
                        std::max(height, 0.0));
}

XTextEncoding encodingOf(const XProperty& text, const WindowAtoms& atoms) {
    if (text.type() == atoms.compoundText) {
        return XTextEncoding::compoundText;
    }
    return text.type() == XCB_ATOM_STRING ? XTextEncoding::latin1 : XTextEncoding::utf8;
}

/// WM_CLASS holds two strings, each with a zero byte behind it.
std::pair<std::string, std::string> twoNames(std::string_view bytes) {
    const auto endOfFirst = std::min(bytes.find('\0'), bytes.size());
    const auto second = bytes.substr(std::min(endOfFirst + 1, bytes.size()));
    return {decodeXText(bytes, XTextEncoding::latin1), decodeXText(second, XTextEncoding::latin1)};
}

}  // namespace

XWindowQuery::XWindowQuery(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t window,
                           std::optional<std::uint32_t> currentDesktop)
    : connection_(connection),
      atoms_(atoms),
      window_(window),
      currentDesktop_(currentDesktop),
      geometry_(xcb_get_geometry(connection.get(), window).sequence),
      position_(xcb_translate_coordinates(connection.get(), window, connection.root(), 0, 0).sequence),
      attributes_(xcb_get_window_attributes(connection.get(), window).sequence),
      owner_(connection, atoms, window),
      name_(connection, window, atoms.name, longestXTextBytes),
      oldName_(connection, window, XCB_ATOM_WM_NAME, longestXTextBytes),
      class_(connection, window, XCB_ATOM_WM_CLASS),
      type_(connection, window, atoms.windowType),
      state_(connection, window, atoms.state),
      desktop_(connection, window, atoms.desktop),
      opacity_(connection, window, atoms.opacity),
      frameExtents_(connection, window, atoms.frameExtents),
      shadowExtents_(connection, window, atoms.shadowExtents) {}

// Every answer is taken, also when the window turns out to be gone: XCB would keep it.
std::optional<XWindow> XWindowQuery::answer() const {
    const auto bounds = frame();
    const auto attributes = this->attributes();
    const auto state = state_.answer().numbers();
    XWindow window{.windowID = window_, .title = title(), .processID = owner_.processID()};
    std::tie(window.instanceName, window.className) = twoNames(class_.answer().bytes());
    window.level = level(state, attributes && attributes->overridesRedirect);
    constexpr std::uint32_t opaque = 0xFFFFFFFF;
    window.opacity = static_cast<double>(opacity_.answer().numberOr(opaque)) / opaque;
    const bool isOnCurrentDesktop = this->isOnCurrentDesktop();
    if (!bounds || !attributes) {
        return std::nullopt;
    }
    window.frame = *bounds;
    window.isViewable = attributes->isViewable;
    window.isOnScreen = window.isViewable && isOnCurrentDesktop && !contains(state, atoms_.stateHidden);
    return window;
}

std::optional<CGRect> XWindowQuery::frame() const {
    const XReply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(connection_.get(), {geometry_}, nullptr));
    const XReply<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(connection_.get(), {position_}, nullptr));
    const auto decoration = frameExtents_.answer().numbers();
    const auto shadow = shadowExtents_.answer().numbers();
    if (!size || !place) {
        return std::nullopt;
    }
    const auto bounds = CGRect::make(place->dst_x, place->dst_y, size->width, size->height);
    return grownBy(grownBy(bounds, decoration, 1), shadow, -1);
}

std::optional<XWindowQuery::Attributes> XWindowQuery::attributes() const {
    const XReply<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(connection_.get(), {attributes_}, nullptr));
    if (!reply || reply->_class == XCB_WINDOW_CLASS_INPUT_ONLY) {
        return std::nullopt;
    }
    return Attributes{.isViewable = reply->map_state == XCB_MAP_STATE_VIEWABLE,
                      .overridesRedirect = reply->override_redirect != 0};
}

std::optional<std::string> XWindowQuery::title() const {
    const XProperty name = name_.answer();
    const XProperty oldName = oldName_.answer();
    const XProperty& told = name.bytes().empty() ? oldName : name;
    auto title = decodeXText(told.bytes(), encodingOf(told, atoms_));
    return title.empty() ? std::nullopt : std::optional(std::move(title));
}

/// A program that takes its window away from the window manager and doesn't say what it is shows a menu or the like.
CGWindowLevel XWindowQuery::level(const std::vector<std::uint32_t>& state, bool overridesRedirect) const {
    CGWindowLevel level = overridesRedirect ? popUpMenuLevel : normalLevel;
    for (const std::uint32_t type : type_.answer().numbers()) {
        const auto known = std::find_if(levelsOfTypes.begin(), levelsOfTypes.end(),
                                        [&](const auto& entry) { return atoms_.*entry.first == type; });
        if (known != levelsOfTypes.end()) {
            level = CGWindowLevelForKey(known->second);
            break;
        }
    }
    return level == normalLevel && contains(state, atoms_.stateAbove) ? floatingLevel : level;
}

bool XWindowQuery::isOnCurrentDesktop() const {
    constexpr std::uint32_t all = 0xFFFFFFFF;
    const std::uint32_t desktop = desktop_.answer().numberOr(all);
    return desktop == all || !currentDesktop_ || desktop == *currentDesktop_;
}

}  // namespace zorvane
