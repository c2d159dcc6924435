#include "Zorvane/ZVLogger.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

#include "Zorvane/Platform/Foundation/SystemLog.hpp"
#include "tests/Support/LogCapture.hpp"

namespace zorvane {
namespace {

using HandlerMode = ZVLogger::HandlerMode;
using LogMessage = ZVLogger::LogMessage;

/// Logs one line, and tells what of it was evaluated.
struct Line {
    int messageEvaluations = 0;
    int metadataEvaluations = 0;

    void log(ZVLogger& zvLogger, ZVLogLevel level, std::string_view category = "Category") {
        const auto message = [&] {
            ++messageEvaluations;
            return "Text.";
        };
        const auto metadata = [&] {
            ++metadataEvaluations;
            return LogMetadata{};
        };
        zvLogger.log(level, category, message, {}, metadata);
    }
};

void log(ZVLogger& zvLogger, ZVLogLevel level, std::string_view category, std::string_view message) {
    zvLogger.log(level, category, message, {}, LogMetadata{});
}

class RecordingSystemLog : public SystemLog {
  public:
    explicit RecordingSystemLog(SystemLogType lowest) : lowest_(lowest) {}

    bool isEnabled(SystemLogType type) const override { return type >= lowest_; }
    void write(const SystemLogEntry& entry) override { lines.emplace_back(entry.type, entry.text); }

    std::vector<std::pair<SystemLogType, std::string>> lines;

  private:
    const SystemLogType lowest_;
};

TEST(ZVLogger, LetsDebugLinesPassAndTraceLinesNot) {
    const auto zvLogger = std::make_shared<ZVLogger>();
    const LogCapture capture(zvLogger);
    Line line;
    line.log(*zvLogger, ZVLogLevel::trace);
    EXPECT_EQ(line.messageEvaluations + line.metadataEvaluations, 0);
    line.log(*zvLogger, ZVLogLevel::debug);
    EXPECT_EQ(line.messageEvaluations, 1);
    EXPECT_EQ(line.metadataEvaluations, 1);
    EXPECT_EQ(capture.messages().size(), 1U);
}

TEST(ZVLogger, LetsACategoryBeStricterOrLooserThanTheRest) {
    const LogCapture capture;
    ZVLogger& zvLogger = *capture.zvLogger();
    zvLogger.setLogLevel(ZVLogLevel::warning);
    zvLogger.setLogLevel("Loose", ZVLogLevel::trace);
    zvLogger.setLogLevel("Strict", ZVLogLevel::critical);
    for (const char* category : {"Loose", "Strict", "Other"}) {
        log(zvLogger, ZVLogLevel::info, category, category);
        log(zvLogger, ZVLogLevel::error, category, category);
    }
    EXPECT_EQ(capture.count(ZVLogLevel::info, "Loose"), 1U);
    EXPECT_EQ(capture.count(ZVLogLevel::error, "Other"), 1U);
    EXPECT_EQ(capture.messages().size(), 3U);
}

TEST(ZVLogger, EvaluatesALineOnceForAllHandlersAndNotAtAllForNone) {
    ZVLogger zvLogger;
    Line unread;
    unread.log(zvLogger, ZVLogLevel::critical);
    EXPECT_EQ(unread.messageEvaluations + unread.metadataEvaluations, 0);

    int calls = 0;
    const auto count = [&](const LogMessage&) { ++calls; };
    auto first = zvLogger.addLogHandler(HandlerMode::realtime, count);
    auto second = zvLogger.addLogHandler(HandlerMode::realtime, count);
    Line read;
    read.log(zvLogger, ZVLogLevel::info);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(read.messageEvaluations, 1);

    first.reset();
    second.reset();
    unread.log(zvLogger, ZVLogLevel::critical);
    EXPECT_EQ(unread.messageEvaluations, 0) << "released tokens take their handlers along";
}

TEST(ZVLogger, ReplacesItsOutputButKeepsAddedHandlers) {
    const auto systemLog = std::make_shared<RecordingSystemLog>(SystemLogType::debug);
    ZVLogger zvLogger(systemLog);
    int added = 0;
    int first = 0;
    int second = 0;
    const auto token = zvLogger.addLogHandler(HandlerMode::realtime, [&](const LogMessage&) { ++added; });
    Line().log(zvLogger, ZVLogLevel::info);
    zvLogger.setLogHandler(HandlerMode::realtime, [&](const LogMessage&) { ++first; });
    Line().log(zvLogger, ZVLogLevel::info);
    zvLogger.setLogHandler(HandlerMode::realtime, [&](const LogMessage&) { ++second; });
    Line().log(zvLogger, ZVLogLevel::info);
    EXPECT_EQ(systemLog->lines.size(), 1U);
    EXPECT_EQ(first, 1);
    zvLogger.setLogHandler(HandlerMode::realtime, nullptr);
    Line().log(zvLogger, ZVLogLevel::info);
    EXPECT_EQ(second, 1);
    EXPECT_EQ(added, 4);
}

TEST(ZVLogger, WritesToTheSystemLogByItsSeverities) {
    const auto systemLog = std::make_shared<RecordingSystemLog>(SystemLogType::info);
    ZVLogger zvLogger(systemLog);
    zvLogger.setLogLevel(ZVLogLevel::trace);
    for (const ZVLogLevel level : allLogLevels) {
        zvLogger.log(level, "Category", "Text.", LogMetadata{{"key", "value"}}, LogMetadata{});
    }
    const std::string text = "[Category] Text. key=value";
    const std::vector<std::pair<SystemLogType, std::string>> expected{{SystemLogType::info, text},
                                                                      {SystemLogType::notice, text},
                                                                      {SystemLogType::error, text},
                                                                      {SystemLogType::error, text},
                                                                      {SystemLogType::error, text}};
    EXPECT_EQ(systemLog->lines, expected) << "trace lines are of a severity that this log doesn't keep";
}

TEST(ZVLogger, RunsNonblockingHandlersInOrderAndNotOnTheLoggingThread) {
    ZVLogger zvLogger;
    constexpr int count = 1000;
    std::vector<std::string> seen;
    std::promise<std::thread::id> finished;
    const auto token = zvLogger.addLogHandler(HandlerMode::nonblocking, [&](const LogMessage& message) {
        seen.push_back(message.message);
        if (seen.size() == count) {
            finished.set_value(std::this_thread::get_id());
        }
    });
    std::vector<std::string> expected;
    for (int index = 0; index < count; ++index) {
        expected.push_back(std::to_string(index));
        log(zvLogger, ZVLogLevel::info, "Category", expected.back());
    }
    EXPECT_NE(finished.get_future().get(), std::this_thread::get_id());
    EXPECT_EQ(seen, expected);
}

TEST(ZVLogger, DeliversQueuedMessagesAfterItIsGone) {
    std::promise<std::string> delivered;
    {
        ZVLogger zvLogger;
        zvLogger.setLogHandler(HandlerMode::nonblocking,
                               [&](const LogMessage& message) { delivered.set_value(message.message); });
        log(zvLogger, ZVLogLevel::info, "Category", "Last words.");
    }
    EXPECT_EQ(delivered.get_future().get(), "Last words.");
}

TEST(ZVLogger, MayBeUsedFromWithinAHandler) {
    ZVLogger zvLogger;
    std::vector<std::string> seen;
    ZVLogger::HandlerToken late;
    zvLogger.setLogHandler(HandlerMode::realtime, [&](const LogMessage& message) {
        seen.push_back(message.message);
        if (message.message == "outer") {
            zvLogger.setLogLevel("Inner", ZVLogLevel::trace);
            log(zvLogger, ZVLogLevel::trace, "Inner", "inner");
            late = zvLogger.addLogHandler(HandlerMode::realtime, [](const LogMessage&) {});
            zvLogger.setLogHandler(HandlerMode::realtime, [](const LogMessage&) {});
        }
    });
    log(zvLogger, ZVLogLevel::info, "Outer", "outer");
    log(zvLogger, ZVLogLevel::info, "Outer", "after");
    EXPECT_EQ(seen, (std::vector<std::string>{"outer", "inner"}));
}

TEST(ZVLogger, StandsChangesOfEverythingWhileThreadsLog) {
    const LogCapture capture;
    ZVLogger& zvLogger = *capture.zvLogger();
    std::atomic<bool> stop = false;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&] {
            while (!stop) {
                Line().log(zvLogger, ZVLogLevel::info, "Busy");
            }
        });
    }
    for (int round = 0; round < 200; ++round) {
        zvLogger.setLogLevel(round % 2 == 0 ? ZVLogLevel::trace : ZVLogLevel::error);
        zvLogger.setLogLevel("Busy" + std::to_string(round % 4), ZVLogLevel::trace);
        const auto owned = std::make_shared<std::atomic<int>>(0);
        const auto token = zvLogger.addLogHandler(HandlerMode::realtime, [owned](const LogMessage&) { ++*owned; });
        zvLogger.setLogHandler(HandlerMode::nonblocking, [owned](const LogMessage&) { ++*owned; });
    }
    zvLogger.setLogLevel(ZVLogLevel::trace);
    log(zvLogger, ZVLogLevel::info, "Quiet", "End.");
    stop = true;
    EXPECT_TRUE(capture.has(ZVLogLevel::info, "End."));
}

TEST(ZVLogger, IsOneForTheProcess) {
    EXPECT_EQ(ZVLogger::shared(), ZVLogger::shared());
}

TEST(LogMessage, JoinsItsPartsByOneSpaceEach) {
    LogMessage message{{}, ZVLogLevel::info, "Conductor", "Started.", {{"b", "x=y z"}, {"a", ""}}};
    const std::string line = message.description();
    EXPECT_EQ(line.substr(line.find(' ')), " info [Conductor] Started. a= b=x=y z");
    message.metadata.clear();
    EXPECT_TRUE(message.description().ends_with(" info [Conductor] Started. "));
}

TEST(LogMessage, SortsMetadataByWholePairs) {
    // By keys alone, "a" would come first.
    EXPECT_EQ((LogMessage{{}, ZVLogLevel::info, "", "", {{"a", "2"}, {"a-b", "1"}}}.formattedMetadata()), "a-b=1 a=2");
}

TEST(ZVLogLevel, IsNamedInLowerCase) {
    for (const ZVLogLevel level : allLogLevels) {
        EXPECT_EQ(logLevelFromRawValue(rawValue(level)), level);
    }
    EXPECT_EQ(rawValue(ZVLogLevel::critical), "critical");
    EXPECT_EQ(logLevelFromRawValue("Info"), std::nullopt);
}

}  // namespace
}  // namespace zorvane
