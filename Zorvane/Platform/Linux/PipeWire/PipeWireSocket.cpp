#include "Zorvane/Platform/Linux/PipeWire/PipeWireSocket.hpp"

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace zorvane {
namespace {

/// A variable of the environment; one that is set to nothing counts as not set.
std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::filesystem::path runtimeDirectory() {
    for (const char* name : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR"}) {
        if (const std::string directory = variable(name); !directory.empty()) {
            return directory;
        }
    }
    return "/run/pipewire";
}

}  // namespace

std::filesystem::path pipeWireSocketPath() {
    const std::string remote = variable("PIPEWIRE_REMOTE");
    // Joining with an absolute path gives that path.
    return runtimeDirectory() / (remote.empty() ? "pipewire-0" : remote);
}

PipeWireConnecting connectToPipeWire(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.native().size() >= sizeof(address.sun_path)) {
        return {{}, ENAMETOOLONG};
    }
    std::memcpy(address.sun_path, path.c_str(), path.native().size());
    FileDescriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!descriptor || connect(descriptor.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        return {{}, errno};
    }
    return {std::move(descriptor), 0};
}

PipeWireStatus pipeWireStatus() {
    using enum PipeWireStatus::Reachability;
    const std::filesystem::path path = pipeWireSocketPath();
    const PipeWireConnecting connecting = connectToPipeWire(path);
    // A queue that is full is one that is served.
    const bool isServed = connecting.socket || connecting.error == EAGAIN;
    const bool isDenied = connecting.error == EACCES || connecting.error == EPERM;
    return {isServed ? reachable : isDenied ? permissionDenied : notRunning, path.string()};
}

}  // namespace zorvane
