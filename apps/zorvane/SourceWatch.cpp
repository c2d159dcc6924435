#include "SourceWatch.hpp"

#include <stop_token>
#include <utility>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "SourceChanges.hpp"
#include "SourceLists.hpp"
#include "SourceTable.hpp"
#include "StopSignal.hpp"
#include "WriteAll.hpp"

namespace zorvane::cli {
namespace {

std::string timeOfDay() {
    const auto now = std::chrono::system_clock::now();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
    return fmt::format("{:%H:%M:%S}.{:03}", fmt::localtime(std::chrono::system_clock::to_time_t(now)),
                       milliseconds % 1000);
}

std::string listJSON(SourceKind kind, const SourceRows& rows) {
    auto sources = nlohmann::ordered_json::array();
    for (const SourceRow& row : rows) {
        sources.push_back(row.properties);
    }
    const nlohmann::ordered_json json{{"change", "listed"}, {"kind", rawValue(kind)}, {"sources", std::move(sources)}};
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace

void SourceWatch::run() {
    std::stop_source stop;
    const StopSignal signal([this] {
        std::lock_guard lock(mutex_);
        isStopRequested_ = true;
        changed_.notify_all();
    });
    for (const SourceKind kind : options_.kinds) {
        auto follow = followSources(kind, [this, kind](SourceRows rows) { print(kind, std::move(rows)); });
        std::move(follow).start(
            [this](const ZVOutcome<>&) {
                std::lock_guard lock(mutex_);
                ended_++;
                changed_.notify_all();
            },
            stop.get_token());
    }
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isStopRequested_ || error_ || ended_ == options_.kinds.size(); });
    stop.request_stop();
    changed_.wait(lock, [this] { return ended_ == options_.kinds.size(); });
    if (error_) {
        std::rethrow_exception(error_);
    }
}

void SourceWatch::print(SourceKind kind, SourceRows rows) {
    std::lock_guard lock(mutex_);
    if (error_ || isStopRequested_) {
        return;
    }
    try {
        printResult(linesFor(kind, rows));
    } catch (...) {
        error_ = std::current_exception();
        changed_.notify_all();
    }
    last_[kind] = std::move(rows);
}

std::string SourceWatch::linesFor(SourceKind kind, const SourceRows& rows) {
    const auto last = last_.find(kind);
    if (last == last_.end()) {
        const char* gap = last_.empty() ? "" : "\n";
        return options_.json ? listJSON(kind, rows) : gap + sourceTable(kind, rows);
    }
    std::string lines;
    for (const SourceChange& change : changesBetween(last->second, rows)) {
        lines += options_.json ? changeJSON(kind, change) : timeOfDay() + " " + changeText(kind, change);
        lines += '\n';
    }
    return lines;
}

}  // namespace zorvane::cli
