#include "Zorvane/Internal/Conductor.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>

#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "tests/Support/ConductorBench.hpp"

namespace zorvane {
namespace {

using Reached = ConductorBench::Reached;
using Level = ZVLogLevel;

/// What an operation does in a state: the line it logs first, and how it ends.
struct Row {
    Reached state;
    Level level;
    std::string line;
    std::string outcome = "returned";
};

const std::vector<Reached> ended{Reached::stopping,      Reached::stopped,     Reached::stopFailed,
                                 Reached::abortedByUser, Reached::interrupted, Reached::abortFailed};

std::vector<Row> plusEnded(std::vector<Row> rows, const std::string& line, const std::string& outcome) {
    for (const Reached state : ended) {
        rows.push_back({state, Level::error, line, outcome});
    }
    return rows;
}

TEST(Conductor, PrepareDoesInEachStateWhatTheStateAllows) {
    const std::vector<Row> rows{
        {Reached::initial, Level::debug, "Preparing recording."},
        {Reached::prepared, Level::warning, "Prepare called while already prepared before, nothing to do."},
        {Reached::recording, Level::warning, "Prepare called while already prepared before, nothing to do."},
        {Reached::prepareFailed, Level::warning, "Prepare called while previously failed, rethrowing same error again.",
         "no source"},
    };
    for (const Row& row : plusEnded(rows, "Cannot prepare a recorder that has already been stopped.",
                                    "Prepare called on recorder that already has stopped recording.")) {
        ConductorBench bench;
        bench.reach(row.state);
        EXPECT_EQ(describe(outcomeOf(bench.conductor->prepare("T"))), row.outcome);
        EXPECT_TRUE(bench.log.has(row.level, row.line, {{"traceID", "T"}}));
        EXPECT_LE(bench.recorder().preparing.runs(), 1);
        bench.letGo();
    }
}

TEST(Conductor, StartDoesInEachStateWhatTheStateAllows) {
    const std::vector<Row> rows{
        {Reached::initial, Level::warning, "Start called while unprepared, preparing now."},
        {Reached::prepared, Level::debug, "Starting recording."},
        {Reached::recording, Level::warning, "Start called while already recording, nothing to do."},
        {Reached::prepareFailed, Level::error,
         "Cannot start a recorder that failed preparation, rethrowing preparation error.", "no source"},
    };
    for (const Row& row : plusEnded(rows, "Cannot start a recorder that has already been stopped.",
                                    "Start called on recorder that already has stopped recording.")) {
        ConductorBench bench;
        bench.reach(row.state);
        const double recordFrom = bench.conductor->statistics().recordFrom;
        EXPECT_EQ(describe(outcomeOf(bench.conductor->start("T"))), row.outcome);
        EXPECT_TRUE(bench.log.has(row.level, row.line, {{"traceID", "T"}}));
        if (recordFrom < std::numeric_limits<double>::infinity()) {
            EXPECT_EQ(bench.conductor->statistics().recordFrom, recordFrom) << "the start was stamped twice";
        }
        bench.letGo();
    }
}

TEST(Conductor, CallsThatComeDuringPreparationWaitForItsEnd) {
    ConductorBench bench;
    bench.reach(Reached::preparing);
    const auto prepare = spawn(bench.conductor->prepare("P"));
    const auto start = spawn(bench.conductor->start("S"));
    Activity::waitUntilIdle();
    EXPECT_TRUE(bench.log.has(Level::warning, "Prepare called while already preparing, waiting for completion.",
                              {{"traceID", "P"}}));
    EXPECT_TRUE(bench.log.has(Level::warning, "Start called while still preparing, waiting for completion.",
                              {{"traceID", "S"}}));

    bench.letGo();
    EXPECT_EQ(describe(outcomeOf(prepare.value())), "returned");
    EXPECT_EQ(describe(outcomeOf(start.value())), "returned");
    EXPECT_TRUE(bench.log.has(Level::info, "Preparation resumed after state change.", {{"traceID", "P"}}));
    EXPECT_TRUE(bench.log.has(Level::debug, "Start resumed after state change.", {{"traceID", "S"}}));
    EXPECT_TRUE(bench.log.has(Level::info, "Started recording.", {{"traceID", "S"}}));
    EXPECT_EQ(bench.recorder().preparing.runs(), 1);
}

TEST(Conductor, CallsThatWaitedForAFailedPreparationGetItsError) {
    ConductorBench bench;
    bench.recorder().preparing.failWith(failure("no source"));
    bench.reach(Reached::preparing);
    const auto prepare = spawn(bench.conductor->prepare("P"));
    const auto start = spawn(bench.conductor->start("S"));
    const auto stop = spawn(bench.conductor->stop("X"));
    Activity::waitUntilIdle();
    bench.letGo();
    EXPECT_EQ(describe(outcomeOf(prepare.value())), "no source");
    EXPECT_EQ(describe(outcomeOf(start.value())), "no source");
    EXPECT_EQ(partialResultError(outcomeOf(stop.value())).localizedDescription(), "Unexpected error.\nno source");
}

TEST(Conductor, ACancelledWaitForThePreparationLeavesThePreparationAlone) {
    ConductorBench bench;
    bench.reach(Reached::preparing);
    const auto waiting = spawn(bench.conductor->start("S"));
    Activity::waitUntilIdle();
    waiting.cancel();
    EXPECT_TRUE(outcomeOf(waiting.value()).isCancelled());
    bench.letGo();
    EXPECT_EQ(describe(bench.start()), "returned");
}

TEST(Conductor, TellsTheLifeOfARecordingInItsLog) {
    ConductorBench bench(2);
    EXPECT_FALSE(std::filesystem::exists(bench.bundleURL)) << "made before preparation";
    bench.prepare();
    bench.start();
    const ZVOutcome<ZVRecorder::Result> stopped = bench.stop();
    EXPECT_EQ(describe(stopped), "returned");
    const std::vector<std::string> expected{
        "trace Using output directory provided in schema.",
        "info Initialized.",
        "debug Preparing recording.",
        "trace Output directory created.",
        "trace Created internal recorders.",
        "trace Prepared internal recorders.",
        "info Prepared, ready to start recording.",
        "debug Starting recording.",
        "info Started recording.",
        "debug Stopping recording from recording state.",
        "trace Writing zorvane.json to output folder.",
        "info Wrote zorvane.json to output folder.",
        "info Stopped recording.",
    };
    EXPECT_EQ(bench.lines(), expected);

    const std::string url = "file://" + bench.bundleURL.string() + "/";
    const LogMetadata counts{{"recorders.count", "2"}, {"schema.items.count", "2"}, {"traceID", "P"}};
    const auto statistics = bench.conductor->statistics();
    EXPECT_TRUE(bench.log.has(Level::trace, "Using output directory provided in schema.",
                              {{"bundleURL", url}, {"Conductor", "Ab3dE"}}));
    EXPECT_TRUE(
        bench.log.has(Level::info, "Initialized.",
                      {{"schema", "outputDirectory: " + bench.bundleURL.string() + ", items: [custom, custom]"}}));
    EXPECT_TRUE(bench.log.has(Level::trace, "Output directory created.", {{"bundleURL", url}, {"traceID", "P"}}));
    EXPECT_TRUE(bench.log.has(Level::trace, "Created internal recorders.", counts));
    EXPECT_TRUE(bench.log.has(Level::trace, "Prepared internal recorders.", counts));
    EXPECT_TRUE(bench.log.has(Level::info, "Started recording.",
                              {{"recordFrom", fmt::format("{}", statistics.recordFrom)}, {"traceID", "S"}}));
    EXPECT_TRUE(bench.log.has(Level::info, "Stopped recording.",
                              {{"recordFrom", fmt::format("{}", statistics.recordFrom)},
                               {"recordUntil", fmt::format("{}", statistics.recordUntil)},
                               {"duration", fmt::format("{}", statistics.recordUntil - statistics.recordFrom)},
                               {"traceID", "X"}}));
}

TEST(Conductor, StampsTheStartAndTheStopWithTheHostClock) {
    ConductorBench bench;
    bench.prepare();
    EXPECT_EQ(bench.conductor->statistics().recordFrom, std::numeric_limits<double>::infinity());
    const double before = hostTimeClockTime().seconds();
    bench.start();
    const double between = hostTimeClockTime().seconds();
    EXPECT_EQ(bench.conductor->statistics().recordUntil, std::numeric_limits<double>::infinity());
    bench.stop();
    const double after = hostTimeClockTime().seconds();
    const auto statistics = bench.conductor->statistics();
    EXPECT_TRUE(before <= statistics.recordFrom && statistics.recordFrom <= between);
    EXPECT_TRUE(between <= statistics.recordUntil && statistics.recordUntil <= after);
}

TEST(Conductor, StampsTheStopBeforeItAsksTheRecordersToFinish) {
    ConductorBench bench;
    bench.reach(Reached::stopping);
    EXPECT_EQ(bench.recorder().finishing.runs(), 1);
    EXPECT_LE(bench.conductor->statistics().recordUntil, hostTimeClockTime().seconds());
    bench.letGo();
}

TEST(Conductor, RecordsAnEmptySchemaWithAWarning) {
    ConductorBench bench(0);
    EXPECT_EQ(describe(bench.start()), "returned");
    EXPECT_TRUE(bench.log.has(Level::warning,
                              "Schema resulted in no internal recorders, nothing will be captured, this might indicate "
                              "an issue with the schema.",
                              {{"recorders.count", "0"}, {"schema.items.count", "0"}}));
    EXPECT_EQ(bench.stop().value().bundleInfo, ZVBundleInfo::empty);
    EXPECT_TRUE(std::filesystem::exists(bench.manifest()));
}

TEST(Conductor, RefusesADirectoryThatExistsAndLeavesItAlone) {
    for (const bool isDanglingLink : {false, true}) {
        ConductorBench bench;
        if (isDanglingLink) {
            std::filesystem::create_symlink("nowhere", bench.bundleURL);
        } else {
            std::filesystem::create_directory(bench.bundleURL);
            std::ofstream(bench.bundleURL / "precious") << "data";
        }
        const std::string url = "file://" + bench.bundleURL.string() + "/";
        EXPECT_EQ(describe(bench.prepare()), "Provided outputDirectory already exists: " + url);
        EXPECT_TRUE(bench.log.has(Level::error, "Provided output directory in schema already exists."));
        EXPECT_TRUE(bench.log.has(Level::error, "Failed to prepare.",
                                  {{"error", "Provided outputDirectory already exists: " + url}}));
        EXPECT_EQ(std::filesystem::exists(bench.bundleURL / "precious"), !isDanglingLink);
        EXPECT_EQ(bench.recorder().preparing.runs(), 0);
    }
}

TEST(Conductor, GivesTheSystemsErrorForADirectoryThatCanNotBeMade) {
    ConductorBench bench;
    std::ofstream(bench.directory.path() / "file") << "in the way";
    bench.bundleURL = bench.directory.path() / "file" / "bundle";
    bench.conductor = Conductor::make("Ab3dE", ZVSchema{bench.bundleURL, {}}, bench.log.logger<ConductorBench>(), {});
    const std::exception_ptr error = bench.prepare().error();
    EXPECT_EQ(ZVError::_uncaught(error).errorGroup(), "NSError domain:NSPOSIXErrorDomain code:20");
}

TEST(Conductor, RefusesAnEmptyPathNoSoonerThanInPreparation) {
    const LogCapture log;
    const auto conductor = Conductor::make("Ab3dE", ZVSchema{"", {}}, log.logger<ConductorBench>(), {});
    EXPECT_TRUE(log.has(Level::trace, "Using output directory provided in schema.", {{"bundleURL", "file://"}}));
    EXPECT_EQ(ZVError::_uncaught(outcomeOf(conductor->prepare("P")).error()).errorGroup(),
              "NSError domain:NSPOSIXErrorDomain code:22");
}

TEST(Conductor, AFailingRecorderCancelsThePreparationOfTheOthersAndWaitsForThem) {
    ConductorBench bench(2);
    bench.recorder(0).preparing.hold();
    bench.recorder(1).preparing.failWith(failure("no source"));
    EXPECT_EQ(describe(bench.prepare()), "no source");
    EXPECT_TRUE(bench.recorder(0).preparing.wasCancelled());
    EXPECT_TRUE(bench.log.has(Level::error, "Failed to prepare.", {{"error", "no source"}, {"traceID", "P"}}));
    EXPECT_TRUE(std::filesystem::is_directory(bench.bundleURL)) << "a failed preparation deletes nothing";
    EXPECT_EQ(bench.recorder(0).finishing.runs(), 0);
}

TEST(Conductor, AnItemWhoseExpansionThrowsFailsThePreparation) {
    const auto refuse = [](const std::filesystem::path&, const Logger&, const AbortHandler&) -> Recorders {
        throw ZVError::invalidConfiguration("no such source");
    };
    const auto good = std::make_shared<ScriptedRecorder>("good");
    ConductorBench bench({customItem({good}), ZVSchemaItem(InteralSchemaItem(CustomSchemaItem{refuse}))});
    EXPECT_EQ(describe(bench.prepare()), "no such source");
    EXPECT_EQ(good->preparing.runs(), 0);
}

TEST(Conductor, StartAfterAFailedPreparationOfItsOwnRethrows) {
    ConductorBench bench;
    bench.recorder().preparing.failWith(failure("no source"));
    EXPECT_EQ(describe(bench.start()), "no source");
    EXPECT_EQ(bench.log.count(Level::debug, "Starting recording."), 0U);
}

TEST(Conductor, TheAbortHandlerCanBeReplacedUntilPreparationBegins) {
    ConductorBench bench;
    bool called = false;
    EXPECT_EQ(describe(outcomeOf(bench.conductor->setOnAbort([&](const auto&) { called = true; }))), "returned");
    EXPECT_TRUE(bench.log.has(Level::trace, "Updating on abort handler."));
    EXPECT_TRUE(bench.log.has(Level::debug, "Updated on abort handler."));
    bench.reach(Reached::abortedByUser);
    EXPECT_TRUE(called);
    EXPECT_TRUE(bench.aborts->empty());

    for (const Reached state : {Reached::preparing, Reached::prepared, Reached::recording, Reached::prepareFailed}) {
        ConductorBench late;
        late.reach(state);
        EXPECT_EQ(describe(outcomeOf(late.conductor->setOnAbort({}))),
                  "Invalid to set the onAbort handler after prepare has been called.");
        EXPECT_TRUE(late.log.has(Level::error, "Tried to set onAbort handler on a prepared recorder."));
        late.letGo();
    }
}

TEST(Conductor, SumsTheStatisticsOfItsRecorders) {
    ConductorBench bench(2);
    bench.recorder(0).counted = {.framesWritten = 1, .framesDropped = 2, .framesRepeated = 3};
    bench.recorder(1).counted = {.framesWritten = 10, .framesDropped = 20, .framesRepeated = 30};
    EXPECT_EQ(bench.conductor->statistics().framesWritten, 0U);
    bench.prepare();
    const auto statistics = bench.conductor->statistics();
    EXPECT_EQ(statistics.framesWritten, 11U);
    EXPECT_EQ(statistics.framesDropped, 22U);
    EXPECT_EQ(statistics.framesRepeated, 33U);
}

TEST(Conductor, LetsItsRecordersGoInWhateverStateItIsLetGo) {
    for (const Reached state : {Reached::prepared, Reached::recording, Reached::stopped, Reached::abortFailed}) {
        ConductorBench bench;
        bench.reach(state);
        const std::weak_ptr<ScriptedRecorder> recorder = bench.recorders.front();
        const AbortHandler signal = bench.recorder().signal;
        bench.conductor.reset();
        // The schema's item still holds the scripted recorders, and went with the conductor.
        bench.recorders.clear();
        EXPECT_TRUE(recorder.expired());
        signal(AbortSignal::userStopped());
        Activity::waitUntilIdle();
        EXPECT_EQ(bench.aborts->size(), state == Reached::abortFailed ? 1U : 0U);
    }
}

TEST(Conductor, TwoRecordingsAtOnceKnowNothingOfEachOther) {
    ConductorBench first;
    ConductorBench second;
    first.reach(Reached::recording);
    second.reach(Reached::recording);
    first.signal(AbortSignal::userStopped());
    EXPECT_EQ(describe(second.stop()), "returned");
    EXPECT_EQ(first.aborts->size(), 1U);
    EXPECT_TRUE(second.aborts->empty());
    EXPECT_NE(first.conductor->statistics().recordFrom, second.conductor->statistics().recordFrom);
}

}  // namespace
}  // namespace zorvane
