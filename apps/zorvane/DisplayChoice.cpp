#include "DisplayChoice.hpp"

#include <algorithm>
#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "DesktopAnswer.hpp"
#include "UserError.hpp"
#include "Zorvane/Sources/ZVDisplay.hpp"

namespace zorvane::cli {
namespace {

using Displays = ZVDisplay::List;

constexpr const char* noDisplay = "This desktop has no display to record.";

std::string listed(const Displays& displays) {
    std::vector<std::string> names;
    for (const auto& display : displays) {
        names.push_back(
            fmt::format("{} ({}{})", display->id(), display->localizedName(), display->isMain() ? ", main" : ""));
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

bool isAvailable(const std::shared_ptr<ZVDisplay>& display) {
    return display->availability() == ZVDisplay::Availability::available;
}

/// Also if it is not available now: the recording then says why.
std::uint32_t knownDisplay(const Displays& displays, std::uint32_t wanted) {
    if (std::ranges::none_of(displays, [&](const auto& display) { return display->id() == wanted; })) {
        throw userError(fmt::format("There is no display {}. Known displays: {}.", wanted, listed(displays)));
    }
    return wanted;
}

std::uint32_t mainDisplay(Displays displays) {
    std::erase_if(displays, std::not_fn(isAvailable));
    if (displays.empty()) {
        throw userError(noDisplay);
    }
    const auto main = std::ranges::find_if(displays, [](const auto& display) { return display->isMain(); });
    return (main != displays.end() ? *main : displays.front())->id();
}

std::uint32_t displayOf(const Displays& displays, std::optional<std::uint32_t> wanted) {
    if (displays.empty()) {
        throw userError(noDisplay);
    }
    return wanted ? knownDisplay(displays, *wanted) : mainDisplay(displays);
}

Displays askForDisplays() {
    Displays displays = ZVDisplay::displays();
    if (const auto failure = ZVDisplay::discoveryFailure()) {
        std::rethrow_exception(failure);
    }
    return displays;
}

}  // namespace

std::uint32_t chooseDisplay(const DisplayName& wanted, std::stop_token stopToken) {
    return displayOf(awaitDesktop(askForDisplays, std::move(stopToken)), wanted.id);
}

}  // namespace zorvane::cli
