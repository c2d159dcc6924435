// What a log line costs where it stands: on the path of every sample, mostly disabled.
//
// Measured on two shared cores of a virtual machine, -O2: a disabled line 19 ns alone, 27 ns with a second thread doing
// the same; one with a pair of metadata, to a handler that does nothing, 200 ns. Not to be passed there: 60 ns for a
// disabled line, 600 ns for an enabled one.
#include <benchmark/benchmark.h>

#include "Zorvane/Internal/Logger.hpp"

namespace zorvane {
namespace {

struct LoggingBenchmark;

Logger makeLogger(const std::shared_ptr<ZVLogger>& zvLogger) {
    return Logger::forType<LoggingBenchmark>("Ab3dE", {{"Conductor", "x1Y2z"}, {"traceID", "q8W7e"}}, zvLogger);
}

void logLine(const Logger& logger, int index) {
    logger.trace("Got sample.", [&] { return LogMetadata{{"index", std::to_string(index)}}; });
}

void disabledLine(benchmark::State& state) {
    static const auto zvLogger = std::make_shared<ZVLogger>();
    const Logger logger = makeLogger(zvLogger);
    int index = 0;
    for (auto _ : state) {
        logLine(logger, ++index);
    }
}
BENCHMARK(disabledLine)->Threads(1)->Threads(2);

void disabledLineWithCategoryLevels(benchmark::State& state) {
    const auto zvLogger = std::make_shared<ZVLogger>();
    for (const char* category : {"Conductor", "ScreenRecorder", "AudioGapFiller", "FrameRepeater"}) {
        zvLogger->setLogLevel(category, ZVLogLevel::trace);
    }
    const Logger logger = makeLogger(zvLogger);
    int index = 0;
    for (auto _ : state) {
        logLine(logger, ++index);
    }
}
BENCHMARK(disabledLineWithCategoryLevels);

void lineThatNobodyReads(benchmark::State& state) {
    const auto zvLogger = std::make_shared<ZVLogger>();
    zvLogger->setLogLevel(ZVLogLevel::trace);
    const Logger logger = makeLogger(zvLogger);
    int index = 0;
    for (auto _ : state) {
        logLine(logger, ++index);
    }
}
BENCHMARK(lineThatNobodyReads);

void lineToAHandlerThatDoesNothing(benchmark::State& state) {
    const auto zvLogger = std::make_shared<ZVLogger>();
    zvLogger->setLogLevel(ZVLogLevel::trace);
    zvLogger->setLogHandler(ZVLogger::HandlerMode::realtime, [](const ZVLogger::LogMessage&) {});
    const Logger logger = makeLogger(zvLogger);
    int index = 0;
    for (auto _ : state) {
        logLine(logger, ++index);
    }
}
BENCHMARK(lineToAHandlerThatDoesNothing);

void derivedLogger(benchmark::State& state) {
    const Logger logger = makeLogger(std::make_shared<ZVLogger>());
    for (auto _ : state) {
        benchmark::DoNotOptimize(logger.adding({{"traceID", "x1Y2z"}}));
    }
}
BENCHMARK(derivedLogger);

}  // namespace
}  // namespace zorvane
