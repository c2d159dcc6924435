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
    std::uint32_t clientListStacking;
    std::uint32_t processID;
    std::uint32_t name;
    std::uint32_t windowType;
    std::uint32_t typeDesktop;
    std::uint32_t typeDock;
    std::uint32_t state;
    std::uint32_t stateAbove;
    std::uint32_t stateHidden;
    std::uint32_t frameExtents;
    std::uint32_t shadowExtents;

    explicit WindowAtoms(const XConnection& connection);
};

}  // namespace zorvane
