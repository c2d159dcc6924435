#include "Zorvane/Platform/Linux/System/ApplicationCatalog.hpp"

#include <fstream>
#include <utility>

#include "Zorvane/Platform/Foundation/UTF8.hpp"
#include "Zorvane/Platform/Linux/System/IconFiles.hpp"

namespace zorvane {
namespace {

namespace fs = std::filesystem;

fs::path processFolder(std::int32_t processID) {
    return fs::path("/proc") / std::to_string(processID);
}

/// Empty for a process of another user, or none.
std::string executableOf(std::int32_t processID) {
    std::error_code error;
    return processID > 0 ? fs::read_symlink(processFolder(processID) / "exe", error).filename().string() : "";
}

std::string nameOf(std::int32_t processID) {
    std::string name;
    if (processID > 0) {
        std::ifstream file(processFolder(processID) / "comm");
        std::getline(file, name);
    }
    return name;
}

}  // namespace

ApplicationCatalog::ApplicationCatalog(std::vector<fs::path> dataDirectories)
    : dataDirectories_(std::move(dataDirectories)), entries_(dataDirectories_) {}

ApplicationIdentity ApplicationCatalog::identify(std::int32_t processID, const std::string& windowClass,
                                                 const std::string& windowInstance) {
    if (auto entry = entries_.find(windowClass, windowInstance, executableOf(processID))) {
        return {repairedUTF8(entry->name), repairedUTF8(entry->identifier), std::move(entry->icon)};
    }
    return {windowClass.empty() ? repairedUTF8(nameOf(processID)) : windowClass, windowClass, {}};
}

std::optional<fs::path> ApplicationCatalog::iconFile(const ApplicationIdentity& application) const {
    return findIconFile(application.icon, dataDirectories_);
}

}  // namespace zorvane
