#include "Zorvane/Platform/Linux/System/CameraNodes.hpp"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <system_error>

namespace zorvane {
namespace {

bool isCameraName(std::string_view name) {
    constexpr std::string_view prefix = "video";
    return name.starts_with(prefix) && name.size() > prefix.size() &&
           name.find_first_not_of("0123456789", prefix.size()) == std::string_view::npos;
}

std::string groupOf(const std::string& path) {
    struct stat status {};
    group entry{};
    group* found = nullptr;
    std::array<char, 4096> texts{};
    if (::stat(path.c_str(), &status) != 0 ||
        ::getgrgid_r(status.st_gid, &entry, texts.data(), texts.size(), &found) != 0 || !found) {
        return {};
    }
    return found->gr_name;
}

}  // namespace

CameraNodes readCameraNodes(const std::filesystem::path& directory) {
    CameraNodes nodes;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::filesystem::path& path = entry->path();
        if (isCameraName(path.filename().native())) {
            const bool isOpen = ::access(path.c_str(), R_OK | W_OK) == 0;
            (isOpen ? nodes.open : nodes.closed).push_back(path.string());
        }
    }
    std::ranges::sort(nodes.open);
    std::ranges::sort(nodes.closed);
    nodes.group = nodes.closed.empty() ? "" : groupOf(nodes.closed.front());
    return nodes;
}

}  // namespace zorvane
