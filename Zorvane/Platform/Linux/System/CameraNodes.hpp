// The camera devices of the machine, and whether this user may open them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zorvane {

struct CameraNodes {
    std::vector<std::string> open;    ///< paths of those that this process may use
    std::vector<std::string> closed;  ///< and of those that it may not
    std::string group;                ///< who may use the first closed one; empty when unknown
};

/// Looks for video devices, by name. Opens none, since that may switch a camera on.
CameraNodes readCameraNodes(const std::filesystem::path& directory = "/dev");

}  // namespace zorvane
