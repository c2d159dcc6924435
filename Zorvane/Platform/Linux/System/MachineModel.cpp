#include "Zorvane/Platform/Linux/System/MachineModel.hpp"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

namespace zorvane {
namespace {

// Portable, laptop, notebook, sub notebook, tablet, convertible and detachable, as the firmware numbers them.
constexpr std::array<std::string_view, 7> chassisWithLid{"8", "9", "10", "14", "30", "31", "32"};

}  // namespace

std::optional<std::string> MachineModel::model() {
    return firstLine("sys/class/dmi/id/product_name");
}

bool MachineModel::hasLid() {
    if (const auto chassis = firstLine("sys/class/dmi/id/chassis_type")) {
        if (std::ranges::find(chassisWithLid, *chassis) != chassisWithLid.end()) {
            return true;
        }
    }
    std::error_code error;
    return !std::filesystem::is_empty(root_ / "proc/acpi/button/lid", error) && !error;
}

std::optional<std::string> MachineModel::firstLine(const char* path) const {
    std::ifstream file(root_ / path);
    std::string line;
    std::getline(file, line);
    line.erase(line.find_last_not_of(" \t\r") + 1);
    return line.empty() ? std::nullopt : std::optional(line);
}

}  // namespace zorvane
