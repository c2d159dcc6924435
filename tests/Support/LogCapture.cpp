#include "tests/Support/LogCapture.hpp"

#include <algorithm>
#include <mutex>

namespace zorvane {
namespace {

bool includes(const LogMetadata& all, const LogMetadata& some) {
    return std::ranges::includes(all, some);
}

std::shared_ptr<ZVLogger> makeTracingLogger() {
    auto zvLogger = std::make_shared<ZVLogger>();
    zvLogger->setLogLevel(ZVLogLevel::trace);
    return zvLogger;
}

}  // namespace

struct LogCapture::Record {
    std::mutex mutex;
    std::vector<ZVLogger::LogMessage> messages;
};

LogCapture::LogCapture() : LogCapture(makeTracingLogger()) {}

LogCapture::LogCapture(const std::shared_ptr<ZVLogger>& zvLogger)
    : zvLogger_(zvLogger), record_(std::make_shared<Record>()) {
    token_ = zvLogger_->addLogHandler(ZVLogger::HandlerMode::realtime,
                                      [record = record_](const ZVLogger::LogMessage& message) {
                                          const std::lock_guard lock(record->mutex);
                                          record->messages.push_back(message);
                                      });
}

std::vector<ZVLogger::LogMessage> LogCapture::messages() const {
    const std::lock_guard lock(record_->mutex);
    return record_->messages;
}

std::size_t LogCapture::count(ZVLogLevel level, std::string_view message) const {
    return std::ranges::count_if(messages(),
                                 [&](const auto& line) { return line.level == level && line.message == message; });
}

::testing::AssertionResult LogCapture::has(ZVLogLevel level, std::string_view message,
                                           const LogMetadata& metadata) const {
    const auto lines = messages();
    const bool found = std::ranges::any_of(lines, [&](const ZVLogger::LogMessage& line) {
        return line.level == level && line.message == message && includes(line.metadata, metadata);
    });
    if (found) {
        return ::testing::AssertionSuccess();
    }
    auto failure = ::testing::AssertionFailure()
                   << "no " << rawValue(level) << " line \"" << message << "\" with ["
                   << ZVLogger::LogMessage{{}, level, {}, {}, metadata}.formattedMetadata() << "] among:";
    for (const auto& line : lines) {
        failure << "\n  " << rawValue(line.level) << " " << line.message << " [" << line.formattedMetadata() << "]";
    }
    return failure;
}

}  // namespace zorvane
