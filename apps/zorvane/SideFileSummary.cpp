#include "SideFileSummary.hpp"

#include <algorithm>
#include <numeric>
#include <optional>
#include <unordered_map>
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

/// Adds up how long each window was in front.
class TimeInFront {
  public:
    /// In the order of their times.
    void add(const ZVWindowPresence& next) {
        if (shown_) {
            count(next.time().seconds() - shown_->time().seconds());
        }
        shown_ = next;
    }

    /// The last one stands at the end of the recording.
    TopWindowSummary finish() && {
        if (shown_) {
            count(0);
        }
        std::ranges::stable_sort(summary_.windows, std::ranges::greater(), &WindowOnTop::seconds);
        return std::move(summary_);
    }

  private:
    void count(double seconds) {
        if (const auto* window = std::get_if<ZVWindowInfo>(&shown_->payload())) {
            WindowOnTop& known = entry(window->windowID);
            known.title = window->windowTitle;
            known.application = window->applicationName;
            known.seconds += seconds;
        } else {
            summary_.secondsWithout += seconds;
        }
    }

    WindowOnTop& entry(std::uint32_t windowID) {
        const auto [place, isNew] = places_.try_emplace(windowID, summary_.windows.size());
        return isNew ? summary_.windows.emplace_back(WindowOnTop{.windowID = windowID})
                     : summary_.windows[place->second];
    }

    std::optional<ZVWindowPresence> shown_;
    TopWindowSummary summary_;
    std::unordered_map<std::uint32_t, std::size_t> places_;  // of the summary's windows, by id
};

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
    ZVInputEvent::forEach(sideFile,
                          [&summary](const ZVInputEvent& event) { std::visit(Count{summary}, event.payload()); });
    return summary;
}

TopWindowSummary readTopWindowSummary(const std::filesystem::path& sideFile) {
    TimeInFront time;
    ZVWindowPresence::forEach(sideFile, [&time](const ZVWindowPresence& presence) { time.add(presence); });
    return std::move(time).finish();
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
