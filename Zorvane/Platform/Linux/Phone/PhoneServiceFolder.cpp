#include "Zorvane/Platform/Linux/Phone/PhoneServiceFolder.hpp"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>

namespace zorvane {

PhoneServiceFolder::PhoneServiceFolder(const std::filesystem::path& socket)
    : inotify_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    // Events about other files of the folder cost one attempt to connect.
    inotify_add_watch(inotify_.get(), socket.parent_path().c_str(), IN_CREATE | IN_MOVED_TO | IN_ATTRIB);
}

bool PhoneServiceFolder::takeChanges() const {
    alignas(inotify_event) std::array<char, 4096> buffer;
    bool hasChanged = false;
    while (read(inotify_.get(), buffer.data(), buffer.size()) > 0) {
        hasChanged = true;
    }
    return hasChanged;
}

}  // namespace zorvane
