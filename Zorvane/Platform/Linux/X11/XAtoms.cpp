#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"

#include <xcb/xcb.h>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {

std::uint32_t internAtom(const XConnection& connection, std::string_view name) {
    const auto query = xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection.get(), query, nullptr));
    return reply ? reply->atom : 0;
}

std::string atomName(const XConnection& connection, std::uint32_t atom) {
    const auto query = xcb_get_atom_name(connection.get(), atom);
    const XReply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(connection.get(), query, nullptr));
    if (!reply) {
        return {};
    }
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

WindowAtoms::WindowAtoms(const XConnection& connection)
    : clientListStacking(internAtom(connection, "_NET_CLIENT_LIST_STACKING")),
      processID(internAtom(connection, "_NET_WM_PID")),
      name(internAtom(connection, "_NET_WM_NAME")),
      windowType(internAtom(connection, "_NET_WM_WINDOW_TYPE")),
      typeDesktop(internAtom(connection, "_NET_WM_WINDOW_TYPE_DESKTOP")),
      typeDock(internAtom(connection, "_NET_WM_WINDOW_TYPE_DOCK")),
      state(internAtom(connection, "_NET_WM_STATE")),
      stateAbove(internAtom(connection, "_NET_WM_STATE_ABOVE")),
      stateHidden(internAtom(connection, "_NET_WM_STATE_HIDDEN")),
      frameExtents(internAtom(connection, "_NET_FRAME_EXTENTS")),
      shadowExtents(internAtom(connection, "_GTK_FRAME_EXTENTS")) {}

}  // namespace zorvane
