#include "Zorvane/Platform/Linux/System/ProcessLineage.hpp"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <string>

namespace zorvane {
namespace {

/// From `/proc/PID/stat`: `PID (NAME) STATE PARENT ...`, where the name may hold spaces and brackets. 0 if unknown.
std::int32_t parentOf(std::int32_t processID) {
    std::ifstream file("/proc/" + std::to_string(processID) + "/stat");
    const std::string text(std::istreambuf_iterator<char>(file), {});
    constexpr std::string_view behindName = ") S ";
    const std::size_t nameEnd = text.rfind(')');
    std::int32_t parent = 0;
    if (nameEnd != text.npos && nameEnd + behindName.size() < text.size()) {
        std::from_chars(text.data() + nameEnd + behindName.size(), text.data() + text.size(), parent);
    }
    return parent;
}

}  // namespace

std::vector<std::int32_t> processLineage(std::int32_t processID) {
    std::vector<std::int32_t> lineage;
    // Processes that come and go meanwhile might make a ring of what is read one by one.
    while (processID > 0 && std::ranges::count(lineage, processID) == 0) {
        lineage.push_back(processID);
        processID = parentOf(processID);
    }
    return lineage;
}

}  // namespace zorvane
