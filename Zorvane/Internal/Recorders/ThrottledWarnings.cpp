#include "Zorvane/Internal/Recorders/ThrottledWarnings.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"

namespace zorvane {

bool ThrottledWarnings::isDue(std::string_view kind, double seconds) {
    const auto last = lastWarnings_.find(kind);
    if (seconds - (last != lastWarnings_.end() ? last->second : -logRateLimit_) > logRateLimit_) {
        lastWarnings_[kind] = seconds;
        return true;
    }
    return false;
}

void ThrottledWarnings::log(std::string_view message, LogMetadata metadata) const {
    metadata["rateLimitedAt"] = fmt::format("{:.1f}/sec", logRateLimit_);
    Executor::pool()->post([logger = logger_, message, metadata = std::move(metadata)] {
        logger.warning(message, [&] { return metadata; });
    });
}

}  // namespace zorvane
