#include "Zorvane/Platform/Linux/PipeWire/PipeWireSocketWatch.hpp"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <utility>

namespace zorvane {
namespace {

constexpr std::uint32_t comingOrOpening =
    IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

}  // namespace

PipeWireSocketWatch::PipeWireSocketWatch(std::filesystem::path socket)
    : socket_(std::move(socket)), inotify_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    watchNearestFolder();
}

bool PipeWireSocketWatch::takeChanges() {
    bool isConcerned = false;
    alignas(inotify_event) std::array<char, 4096> buffer;
    for (ssize_t size; (size = read(inotify_.get(), buffer.data(), buffer.size())) > 0;) {
        for (ssize_t offset = 0; offset < size;) {
            const auto& event = *reinterpret_cast<const inotify_event*>(buffer.data() + offset);
            isConcerned = isConcerned || concerns(event);
            offset += static_cast<ssize_t>(sizeof(inotify_event) + event.len);
        }
    }
    if (isConcerned) {
        watchNearestFolder();
    }
    return isConcerned;
}

bool PipeWireSocketWatch::concerns(const inotify_event& event) const {
    const bool areEventsLost = (event.mask & IN_Q_OVERFLOW) != 0;
    const bool isFolderItself = event.len == 0;
    return areEventsLost || (event.wd == watch_ && (isFolderItself || awaited_ == event.name));
}

void PipeWireSocketWatch::watchNearestFolder() {
    std::filesystem::path watched;
    do {
        // Until two looks agree: a folder may be made just after it was found missing.
        watched = folder_;
        folder_ = socket_.parent_path();
        while (!watch(folder_) && folder_.has_relative_path()) {
            folder_ = folder_.parent_path();
        }
    } while (folder_ != watched);
    awaited_ = *socket_.lexically_relative(folder_).begin();
}

bool PipeWireSocketWatch::watch(const std::filesystem::path& folder) {
    const int watch = inotify_add_watch(inotify_.get(), folder.c_str(), comingOrOpening);
    if (watch < 0) {
        return false;
    }
    if (watch != watch_ && watch_ >= 0) {
        inotify_rm_watch(inotify_.get(), watch_);
    }
    watch_ = watch;
    return true;
}

}  // namespace zorvane
