#include "DisplayChoice.hpp"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "UserError.hpp"
#include "Zorvane/Sources/ZVDisplay.hpp"
#include "Zorvane/ZVOutcome.hpp"

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

/// What the desktop answers, shared with the thread that asks, which may be left behind.
struct Answer {
    std::mutex mutex;
    std::condition_variable_any given;
    std::optional<ZVOutcome<Displays>> displays;  // guarded by mutex
};

ZVOutcome<Displays> askDesktop() {
    Displays displays = ZVDisplay::displays();
    if (const auto failure = ZVDisplay::discoveryFailure()) {
        return ZVOutcome<Displays>::failure(failure);
    }
    return ZVOutcome<Displays>::success(std::move(displays));
}

Displays awaitDisplays(std::stop_token stopToken) {
    const auto answer = std::make_shared<Answer>();
    std::thread([answer] {
        auto displays = askDesktop();
        std::lock_guard lock(answer->mutex);
        answer->displays = std::move(displays);
        answer->given.notify_all();
    }).detach();
    std::unique_lock lock(answer->mutex);
    if (!answer->given.wait(lock, std::move(stopToken), [&] { return answer->displays.has_value(); })) {
        throw stoppedBeforeStart();
    }
    // Taken out, so that the thread lets go of nothing that is read here.
    ZVOutcome<Displays> displays = *std::exchange(answer->displays, std::nullopt);
    return std::move(displays).value();
}

}  // namespace

std::uint32_t chooseDisplay(std::optional<std::uint32_t> wanted, std::stop_token stopToken) {
    return displayOf(awaitDisplays(std::move(stopToken)), wanted);
}

}  // namespace zorvane::cli
