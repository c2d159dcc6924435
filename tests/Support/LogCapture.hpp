// Records what is logged, for tests to look at.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/ZVLogger.hpp"

namespace zorvane {

/// A log core of its own that passes every level, or a listener on a given one. Safe on any thread.
class LogCapture {
  public:
    LogCapture();
    explicit LogCapture(const std::shared_ptr<ZVLogger>& zvLogger);

    const std::shared_ptr<ZVLogger>& zvLogger() const { return zvLogger_; }
    /// A scoped logger that writes here.
    template <typename Owner>
    Logger logger(Logger::Identifier identifier = std::nullopt) const {
        return Logger::forType<Owner>(identifier, {}, zvLogger_);
    }

    std::vector<ZVLogger::LogMessage> messages() const;
    std::size_t count(ZVLogLevel level, std::string_view message) const;

    /// Succeeds if a line has this level and message, and among its metadata the given pairs; else shows what was
    /// logged.
    ::testing::AssertionResult has(ZVLogLevel level, std::string_view message, const LogMetadata& metadata = {}) const;

  private:
    struct Record;

    std::shared_ptr<ZVLogger> zvLogger_;
    std::shared_ptr<Record> record_;
    ZVLogger::HandlerToken token_;
};

}  // namespace zorvane
