#include "Zorvane/Internal/Logger.hpp"

#include <gtest/gtest.h>

#include "tests/Support/LogCapture.hpp"

namespace zorvane {

struct Conductor;
template <typename Element>
struct Ring {
    struct Slot {};
};

namespace {

struct Hidden {
    struct Coordinator;
};

TEST(Logger, TakesItsCategoryFromTheUnqualifiedTypeName) {
    EXPECT_EQ(Logger::forType<Conductor>().category(), "Conductor");
    EXPECT_EQ(Logger::forType<Hidden>().category(), "Hidden");
    EXPECT_EQ(Logger::forType<Hidden::Coordinator>().category(), "Coordinator");
    EXPECT_EQ(Logger::forType<Ring<std::string>>().category(), "Ring");
    EXPECT_EQ(Logger::forType<Ring<std::string>::Slot>().category(), "Slot");
    EXPECT_EQ(Logger::forType<int>().category(), "int");
}

TEST(Logger, TakesItsCategoryFromTheSourceFile) {
    EXPECT_EQ(Logger::forFile().category(), "LoggerTest");
    EXPECT_EQ(Logger::forType<Conductor>().withFile().category(), "LoggerTest");
    EXPECT_EQ(logCategory("Zorvane/ZVRecorder.cpp"), "ZVRecorder");
    EXPECT_EQ(logCategory("/a/Zorvane.d/ZVRecorder"), "ZVRecorder");
    EXPECT_EQ(logCategory("a/ZVRecorder.cpp//"), "ZVRecorder");
    EXPECT_EQ(logCategory("//"), "//");
    EXPECT_EQ(logCategory(""), "");
}

TEST(Logger, AddsItsIdentifierUnderItsCategory) {
    EXPECT_EQ(Logger::forType<Conductor>("Ab3dE", {{"Conductor", "given"}, {"k", "v"}}).metadata(),
              (LogMetadata{{"Conductor", "Ab3dE"}, {"k", "v"}}));
    EXPECT_EQ(Logger::forType<Conductor>().metadata(), LogMetadata{});
}

TEST(Logger, ShowsTheChainOfItsOwners) {
    const auto conductor = Logger::forType<Conductor>("Ab3dE", {{"k", "old"}});
    const auto hidden = conductor.with<Hidden>("x", {{"k", "new"}});
    EXPECT_EQ(hidden.metadata(), (LogMetadata{{"Conductor", "Ab3dE"}, {"Hidden", "x"}, {"k", "new"}}));
    EXPECT_EQ(conductor.metadata(), (LogMetadata{{"Conductor", "Ab3dE"}, {"k", "old"}})) << "the original is untouched";
}

TEST(Logger, AddsMetadataWithoutChangingItsCategoryOrCore) {
    const LogCapture capture;
    const auto logger = capture.logger<Conductor>("Ab3dE").adding({{"traceID", "x1Y2z"}});
    EXPECT_EQ(logger.category(), "Conductor");
    EXPECT_EQ(logger.metadata(), (LogMetadata{{"Conductor", "Ab3dE"}, {"traceID", "x1Y2z"}}));
    EXPECT_EQ(logger.zvLogger(), capture.zvLogger());
}

TEST(Logger, LogsAtTheLevelOfItsMethod) {
    const LogCapture capture;
    const auto logger = capture.logger<Conductor>();
    logger.trace("trace");
    logger.debug(std::string("debug"));
    logger.info(std::string_view("info"));
    logger.warning([] { return std::string("warning"); });
    logger.error([] { return "error"; });
    logger.critical("critical", [] { return LogMetadata{{"k", "v"}}; });
    const auto lines = capture.messages();
    ASSERT_EQ(lines.size(), 6U);
    for (const auto& line : lines) {
        EXPECT_EQ(line.message, rawValue(line.level));
        EXPECT_EQ(line.category, "Conductor");
    }
    EXPECT_TRUE(capture.has(ZVLogLevel::critical, "critical", {{"k", "v"}}));
}

TEST(Logger, LetsTheMetadataOfALineWin) {
    const LogCapture capture;
    const auto logger = capture.logger<Conductor>("Ab3dE").adding({{"traceID", "logger"}});
    logger.info("Text.", [] { return LogMetadata{{"traceID", "line"}}; });
    EXPECT_TRUE(capture.has(ZVLogLevel::info, "Text.", {{"traceID", "line"}, {"Conductor", "Ab3dE"}}));
    logger.info("Plain.");
    EXPECT_TRUE(capture.has(ZVLogLevel::info, "Plain.", {{"traceID", "logger"}}));
}

TEST(Logger, EvaluatesNothingForADisabledLine) {
    const LogCapture capture;
    capture.zvLogger()->setLogLevel(ZVLogLevel::error);
    const auto evaluated = []() -> std::string {
        ADD_FAILURE() << "evaluated";
        return "";
    };
    capture.logger<Conductor>().warning(evaluated, [&] { return LogMetadata{{"k", evaluated()}}; });
}

}  // namespace
}  // namespace zorvane
