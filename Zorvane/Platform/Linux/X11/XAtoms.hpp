// Names that clients of an X server have agreed on.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zorvane {

class XConnection;

/// The number that the server gives a name; 0 when the connection is gone. One round trip.
std::uint32_t internAtom(const XConnection& connection, std::string_view name);

/// The name of such a number; empty for an unknown one. One round trip.
std::string atomName(const XConnection& connection, std::uint32_t atom);

/// The names by which window managers and programs describe windows.
struct WindowAtoms {
    // On the root window
    std::uint32_t windowManagerCheck = 0;
    std::uint32_t clientList = 0;
    std::uint32_t clientListStacking = 0;
    std::uint32_t activeWindow = 0;
    std::uint32_t currentDesktop = 0;
    // On a window
    std::uint32_t processID = 0;
    std::uint32_t managedState = 0;  ///< "WM_STATE", which a window manager gives the windows it takes care of
    std::uint32_t name = 0;
    std::uint32_t desktop = 0;
    std::uint32_t opacity = 0;
    std::uint32_t frameExtents = 0;
    std::uint32_t shadowExtents = 0;
    std::uint32_t windowType = 0;
    std::uint32_t typeDesktop = 0;
    std::uint32_t typeDock = 0;
    std::uint32_t typeToolbar = 0;
    std::uint32_t typeMenu = 0;
    std::uint32_t typeUtility = 0;
    std::uint32_t typeSplash = 0;
    std::uint32_t typeDialog = 0;
    std::uint32_t typeDropdownMenu = 0;
    std::uint32_t typePopupMenu = 0;
    std::uint32_t typeTooltip = 0;
    std::uint32_t typeNotification = 0;
    std::uint32_t typeCombo = 0;
    std::uint32_t typeDragged = 0;
    std::uint32_t typeNormal = 0;
    std::uint32_t state = 0;
    std::uint32_t stateAbove = 0;
    std::uint32_t stateHidden = 0;
    // Types of properties
    std::uint32_t utf8String = 0;
    std::uint32_t compoundText = 0;

    /// One round trip.
    static WindowAtoms intern(const XConnection& connection);
};

}  // namespace zorvane
