#include "Zorvane/Platform/Linux/System/RunningProgram.hpp"

#include <filesystem>
#include <string>
#include <system_error>

namespace zorvane {

bool runsAnotherProgram(std::int32_t processID, std::string_view program) {
    const std::filesystem::path process = "/proc/" + std::to_string(processID);
    std::error_code error;
    if (!std::filesystem::exists(process, error)) {
        return false;
    }
    std::string name = std::filesystem::read_symlink(process / "exe", error).filename().string();
    constexpr std::string_view replaced = " (deleted)";  // by an update, while it runs
    if (name.ends_with(replaced)) {
        name.resize(name.size() - replaced.size());
    }
    return name != program;
}

}  // namespace zorvane
