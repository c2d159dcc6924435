// Where PipeWire listens, and whether it can be reached.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "Zorvane/Platform/Linux/PipeWire/FileDescriptor.hpp"

namespace zorvane {

/// The socket that the environment names: `PIPEWIRE_REMOTE`, else "pipewire-0", as a name in `PIPEWIRE_RUNTIME_DIR`,
/// else in `XDG_RUNTIME_DIR`, else in the system's "/run/pipewire". An absolute `PIPEWIRE_REMOTE` is the path itself.
std::filesystem::path pipeWireSocketPath();

/// An attempt to connect.
struct PipeWireConnecting {
    FileDescriptor socket;  ///< connected, or none
    int error = 0;          ///< the system's number if there is none
};

/// Tries once and doesn't wait.
PipeWireConnecting connectToPipeWire(const std::filesystem::path& path);

/// Whether this process may use PipeWire, and so microphones and cameras.
struct PipeWireStatus {
    enum class Reachability : std::uint8_t {
        reachable,
        notRunning,        ///< there is no socket, or nobody listens on it
        permissionDenied,  ///< it listens, but not to this user
    };

    Reachability reachability = Reachability::notRunning;
    std::string socketPath;  ///< what was tried

    bool operator==(const PipeWireStatus&) const = default;
};

/// Asks by connecting and hanging up. Doesn't block. Any thread, but none may change the environment meanwhile.
PipeWireStatus pipeWireStatus();

}  // namespace zorvane
