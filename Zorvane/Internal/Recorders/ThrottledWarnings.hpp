// Warnings about what goes wrong many times in a second.
#pragma once

#include <map>
#include <string_view>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// Logs a warning of each kind at most once in a while, on another thread. One thread uses it at a time.
class ThrottledWarnings {
  public:
    /// `logRateLimit` is the time between two of one kind, in seconds.
    ThrottledWarnings(Logger logger, double logRateLimit) : logger_(std::move(logger)), logRateLimit_(logRateLimit) {}

    /// `kind` and `message` are literals. `metadata` is called only if the warning will be logged.
    template <class Metadata>
    void warn(std::string_view kind, CMTime now, std::string_view message, const Metadata& metadata) {
        if (isDue(kind, now.seconds())) {
            log(message, metadata());
        }
    }
    void warn(std::string_view kind, CMTime now, std::string_view message) {
        warn(kind, now, message, [] { return LogMetadata(); });
    }

  private:
    bool isDue(std::string_view kind, double seconds);
    void log(std::string_view message, LogMetadata metadata) const;

    const Logger logger_;
    const double logRateLimit_;
    std::map<std::string_view, double> lastWarnings_;  // seconds of host time, by kind
};

}  // namespace zorvane
