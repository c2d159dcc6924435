#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"

#include <xcb/xcb.h>

#include <array>
#include <utility>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {

namespace {

xcb_intern_atom_cookie_t askFor(const XConnection& connection, std::string_view name) {
    return xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
}

std::uint32_t answer(const XConnection& connection, xcb_intern_atom_cookie_t query) {
    const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection.get(), query, nullptr));
    return reply ? reply->atom : 0;
}

}  // namespace

std::uint32_t internAtom(const XConnection& connection, std::string_view name) {
    return answer(connection, askFor(connection, name));
}

std::string atomName(const XConnection& connection, std::uint32_t atom) {
    const auto query = xcb_get_atom_name(connection.get(), atom);
    const XReply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(connection.get(), query, nullptr));
    if (!reply) {
        return {};
    }
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

WindowAtoms WindowAtoms::intern(const XConnection& connection) {
    constexpr std::array names{
        std::pair(&WindowAtoms::windowManagerCheck, "_NET_SUPPORTING_WM_CHECK"),
        std::pair(&WindowAtoms::clientList, "_NET_CLIENT_LIST"),
        std::pair(&WindowAtoms::clientListStacking, "_NET_CLIENT_LIST_STACKING"),
        std::pair(&WindowAtoms::activeWindow, "_NET_ACTIVE_WINDOW"),
        std::pair(&WindowAtoms::currentDesktop, "_NET_CURRENT_DESKTOP"),
        std::pair(&WindowAtoms::processID, "_NET_WM_PID"),
        std::pair(&WindowAtoms::managedState, "WM_STATE"),
        std::pair(&WindowAtoms::name, "_NET_WM_NAME"),
        std::pair(&WindowAtoms::desktop, "_NET_WM_DESKTOP"),
        std::pair(&WindowAtoms::opacity, "_NET_WM_WINDOW_OPACITY"),
        std::pair(&WindowAtoms::frameExtents, "_NET_FRAME_EXTENTS"),
        std::pair(&WindowAtoms::shadowExtents, "_GTK_FRAME_EXTENTS"),
        std::pair(&WindowAtoms::windowType, "_NET_WM_WINDOW_TYPE"),
        std::pair(&WindowAtoms::typeDesktop, "_NET_WM_WINDOW_TYPE_DESKTOP"),
        std::pair(&WindowAtoms::typeDock, "_NET_WM_WINDOW_TYPE_DOCK"),
        std::pair(&WindowAtoms::typeToolbar, "_NET_WM_WINDOW_TYPE_TOOLBAR"),
        std::pair(&WindowAtoms::typeMenu, "_NET_WM_WINDOW_TYPE_MENU"),
        std::pair(&WindowAtoms::typeUtility, "_NET_WM_WINDOW_TYPE_UTILITY"),
        std::pair(&WindowAtoms::typeSplash, "_NET_WM_WINDOW_TYPE_SPLASH"),
        std::pair(&WindowAtoms::typeDialog, "_NET_WM_WINDOW_TYPE_DIALOG"),
        std::pair(&WindowAtoms::typeDropdownMenu, "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU"),
        std::pair(&WindowAtoms::typePopupMenu, "_NET_WM_WINDOW_TYPE_POPUP_MENU"),
        std::pair(&WindowAtoms::typeTooltip, "_NET_WM_WINDOW_TYPE_TOOLTIP"),
        std::pair(&WindowAtoms::typeNotification, "_NET_WM_WINDOW_TYPE_NOTIFICATION"),
        std::pair(&WindowAtoms::typeCombo, "_NET_WM_WINDOW_TYPE_COMBO"),
        std::pair(&WindowAtoms::typeDragged, "_NET_WM_WINDOW_TYPE_DND"),
        std::pair(&WindowAtoms::typeNormal, "_NET_WM_WINDOW_TYPE_NORMAL"),
        std::pair(&WindowAtoms::state, "_NET_WM_STATE"),
        std::pair(&WindowAtoms::stateAbove, "_NET_WM_STATE_ABOVE"),
        std::pair(&WindowAtoms::stateHidden, "_NET_WM_STATE_HIDDEN"),
        std::pair(&WindowAtoms::utf8String, "UTF8_STRING"),
        std::pair(&WindowAtoms::compoundText, "COMPOUND_TEXT"),
    };
    std::array<xcb_intern_atom_cookie_t, names.size()> queries;
    for (std::size_t index = 0; index < names.size(); ++index) {
        queries[index] = askFor(connection, names[index].second);
    }
    WindowAtoms atoms;
    for (std::size_t index = 0; index < names.size(); ++index) {
        atoms.*names[index].first = answer(connection, queries[index]);
    }
    return atoms;
}

}  // namespace zorvane
