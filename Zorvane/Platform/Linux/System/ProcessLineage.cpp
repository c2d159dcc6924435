#include "Zorvane/Platform/Linux/System/ProcessLineage.hpp"

#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace zorvane {
namespace {

/// What isn't known is 0.
struct Process {
    std::int32_t parent = 0;
    std::uint64_t start = 0;
};

/// From `/proc/PID/stat`: `PID (NAME) STATE PARENT ...`, where the name may hold spaces and brackets. The start is the
/// 18th number behind the parent.
Process readProcess(std::int32_t processID) {
    std::ifstream file("/proc/" + std::to_string(processID) + "/stat");
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const std::size_t nameEnd = text.rfind(')');
    Process process;
    if (nameEnd != text.npos) {
        std::istringstream fields(text.substr(nameEnd + 1));
        std::string other;
        fields >> other >> process.parent;
        for (int skipped = 0; skipped < 17; ++skipped) {
            fields >> other;
        }
        fields >> process.start;
    }
    return process;
}

}  // namespace

std::uint64_t processMoment() {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    const auto rate = static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
    return static_cast<std::uint64_t>(now.tv_sec) * rate +
           static_cast<std::uint64_t>(now.tv_nsec) * rate / 1'000'000'000;
}

std::vector<std::int32_t> processLineage(std::int32_t processID, std::uint64_t moment) {
    std::vector<std::int32_t> lineage;
    std::vector<std::int32_t> seen;
    // Processes that come and go meanwhile might make a ring of what is read one by one.
    while (processID > 0 && std::ranges::count(seen, processID) == 0) {
        const Process process = readProcess(processID);
        seen.push_back(processID);
        if (process.start <= moment) {
            lineage.push_back(processID);
        }
        processID = process.parent;
    }
    return lineage;
}

}  // namespace zorvane
