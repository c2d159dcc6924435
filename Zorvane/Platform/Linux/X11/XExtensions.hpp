// What an X server offers beyond the core protocol.
#pragma once

#include <cstdint>

struct xcb_connection_t;

namespace zorvane {

/// One extension, with the version that both sides speak.
struct XExtension {
    bool isPresent = false;
    std::uint8_t majorOpcode = 0;
    std::uint8_t firstEvent = 0;
    std::uint32_t majorVersion = 0;
    std::uint32_t minorVersion = 0;

    bool isAtLeast(std::uint32_t major, std::uint32_t minor) const {
        return isPresent && (majorVersion > major || (majorVersion == major && minorVersion >= minor));
    }
};

/// The extensions that this backend uses. Their use may begin once the versions are agreed on.
struct XExtensions {
    XExtension composite;
    XExtension damage;
    XExtension randr;
    XExtension record;
    XExtension render;
    XExtension resources;
    XExtension shape;
    XExtension shm;
    XExtension xfixes;
    XExtension xinput;

    /// Agrees on versions with the server, in one round trip per extension.
    static XExtensions negotiate(xcb_connection_t* connection);
};

}  // namespace zorvane
