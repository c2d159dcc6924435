// Sees the socket of the phone service appear.
#pragma once

#include <filesystem>

#include "Zorvane/Platform/Linux/PipeWire/FileDescriptor.hpp"

namespace zorvane {

/// Watches the folder of a socket. One thread.
class PhoneServiceFolder {
  public:
    explicit PhoneServiceFolder(const std::filesystem::path& socket);

    /// Becomes readable when something happens there; negative if the system can't watch.
    int descriptor() const { return inotify_.get(); }

    /// Takes in what happened. True if a file has come, or lets more users in.
    bool takeChanges() const;

  private:
    const FileDescriptor inotify_;
};

}  // namespace zorvane
