#include "DisplayChoice.hpp"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "UserError.hpp"
#include "Zorvane/Sources/ZVDisplay.hpp"

namespace zorvane::cli {
namespace {

using Displays = std::vector<std::shared_ptr<ZVDisplay>>;

std::string listed(const Displays& displays) {
    std::vector<std::string> names;
    for (const auto& display : displays) {
        names.push_back(
            fmt::format("{} ({}{})", display->id(), display->localizedName(), display->isMain() ? ", main" : ""));
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace

std::uint32_t chooseDisplay(std::optional<std::uint32_t> wanted) {
    const Displays displays = ZVDisplay::displays();
    if (displays.empty()) {
        throw userError("This desktop has no display to record.");
    }
    const auto found = std::ranges::find_if(
        displays, [&](const auto& display) { return wanted ? display->id() == *wanted : display->isMain(); });
    if (found != displays.end()) {
        return (*found)->id();
    }
    if (wanted) {
        throw userError(fmt::format("There is no display {}. Known displays: {}.", *wanted, listed(displays)));
    }
    return displays.front()->id();
}

}  // namespace zorvane::cli
