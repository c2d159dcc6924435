// Sees a socket appear where there is none.
#pragma once

#include <filesystem>

#include "Zorvane/Platform/Linux/PipeWire/FileDescriptor.hpp"

struct inotify_event;

namespace zorvane {

/// Watches the folder of a socket, or the nearest folder above it that exists. One thread.
class PipeWireSocketWatch {
  public:
    /// Watches from here on.
    explicit PipeWireSocketWatch(std::filesystem::path socket);

    /// Becomes readable when something happens there; negative if the system can't watch.
    int descriptor() const { return inotify_.get(); }

    /// Takes in what happened. True if it may be that the socket has come or lets more users in.
    bool takeChanges();

  private:
    bool concerns(const inotify_event& event) const;
    void watchNearestFolder();
    bool watch(const std::filesystem::path& folder);

    const std::filesystem::path socket_;
    const FileDescriptor inotify_;
    int watch_ = -1;
    std::filesystem::path folder_;   // what is watched
    std::filesystem::path awaited_;  // the name in it that leads to the socket
};

}  // namespace zorvane
