#include "SideFileSummary.hpp"

#include <algorithm>
#include <numeric>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Figures.hpp"
#include "Zorvane/ZVInputEvent.hpp"
#include "Zorvane/ZVWindowPresence.hpp"

namespace zorvane::cli {
namespace {

/// Adds one event to a summary.
struct Count {
    InputSummary& summary;

    void operator()(const ZVMouseEvent& event) const {
        ++summary.events[rawValue(event.mouseEventType)];
        if (event.mouseEventType == ZVMouseEventType::down && event.button) {
            ++summary.clicks[rawValue(*event.button)];
        }
    }
    void operator()(const ZVKeyboardEvent& event) const {
        const bool isDown = event.keyboardEventType == ZVKeyboardEventType::down;
        ++summary.events[isDown ? "keyDown" : "keyUp"];
        summary.keys += isDown && !event.isARepeat ? 1 : 0;
    }
    void operator()(const ZVInputModifiersChangedEvent&) const { ++summary.events["modifiersChanged"]; }
};

WindowOnTop& entry(TopWindowSummary& summary, std::uint32_t windowID) {
    const auto found = std::ranges::find(summary.windows, windowID, &WindowOnTop::windowID);
    return found != summary.windows.end() ? *found : summary.windows.emplace_back(WindowOnTop{.windowID = windowID});
}

/// Adds what was in front for so long.
void addTo(TopWindowSummary& summary, const ZVWindowPresence& presence, double seconds) {
    if (const auto* window = std::get_if<ZVWindowInfo>(&presence.payload())) {
        WindowOnTop& known = entry(summary, window->windowID);
        known.title = window->windowTitle;
        known.application = window->applicationName;
        known.seconds += seconds;
    } else {
        summary.secondsWithout += seconds;
    }
}

std::uint64_t countOf(const std::map<std::string_view, std::uint64_t>& counts, std::string_view name) {
    const auto found = counts.find(name);
    return found == counts.end() ? 0 : found->second;
}

std::string clicksText(const InputSummary& summary) {
    std::uint64_t all = 0;
    std::vector<std::string> byButton;
    for (const auto& [button, count] : summary.clicks) {
        all += count;
        byButton.push_back(fmt::format("{} {}", count, button));
    }
    return fmt::format("{} ({})", countText(all, "click"), fmt::join(byButton, ", "));
}

}  // namespace

std::uint64_t InputSummary::eventCount() const {
    return std::accumulate(events.begin(), events.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const auto& kind) { return sum + kind.second; });
}

InputSummary readInputSummary(const std::filesystem::path& sideFile) {
    InputSummary summary;
    for (const ZVInputEvent& event : ZVInputEvent::read(sideFile)) {
        std::visit(Count{summary}, event.payload());
    }
    return summary;
}

TopWindowSummary readTopWindowSummary(const std::filesystem::path& sideFile) {
    const std::vector<ZVWindowPresence> presences = ZVWindowPresence::read(sideFile);
    TopWindowSummary summary;
    for (std::size_t index = 0; index < presences.size(); ++index) {
        // The last entry stands at the end of the recording.
        const ZVWindowPresence& next = presences[std::min(index + 1, presences.size() - 1)];
        addTo(summary, presences[index], next.time().seconds() - presences[index].time().seconds());
    }
    std::ranges::stable_sort(summary.windows, std::ranges::greater(), &WindowOnTop::seconds);
    return summary;
}

std::string summaryText(const InputSummary& summary) {
    std::vector<std::string> parts;
    const auto add = [&](std::uint64_t count, std::string_view noun) {
        if (count > 0) {
            parts.push_back(countText(count, noun));
        }
    };
    add(countOf(summary.events, "moved"), "move");
    add(countOf(summary.events, "dragged"), "drag");
    if (!summary.clicks.empty()) {
        parts.push_back(clicksText(summary));
    }
    add(summary.keys, "key");
    add(countOf(summary.events, "cursorChanged"), "cursor change");
    const std::string all = countText(summary.eventCount(), "event");
    return parts.empty() ? all : fmt::format("{}: {}", all, fmt::join(parts, ", "));
}

std::vector<std::string> summaryLines(const TopWindowSummary& summary) {
    std::vector<std::string> lines;
    for (const WindowOnTop& window : summary.windows) {
        const std::string title = window.title ? fmt::format(" \"{}\"", printable(*window.title)) : "";
        const std::string application = window.application ? ", " + printable(*window.application) : "";
        lines.push_back(fmt::format("{:.3f} s: window {}{}{}", window.seconds, window.windowID, title, application));
    }
    if (summary.secondsWithout > 0) {
        lines.push_back(fmt::format("{:.3f} s: no window", summary.secondsWithout));
    }
    return lines;
}

}  // namespace zorvane::cli
