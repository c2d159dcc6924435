#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/Support/ConductorBench.hpp"

namespace zorvane {
namespace {

using Reached = ConductorBench::Reached;
using Level = ZVLogLevel;
using Type = ZVBundleInfo::FileAssetType;

struct Row {
    Reached state;
    Level level;
    std::string line;
    LogMetadata metadata;
    /// Of the one error, if it throws.
    std::string outcome = "returned";
};

TEST(ConductorStop, DoesInEachStateWhatTheStateAllows) {
    const std::vector<Row> rows{
        {Reached::recording, Level::debug, "Stopping recording from recording state.", {}},
        {Reached::prepared, Level::info, "Stopping recorder that only prepared, not yet started.", {}},
        {Reached::initial,
         Level::error,
         "Cannot stop a recorder that hasn't prepared, throwing PartialResultError.",
         {},
         "Called stop while recorder wasn't prepared yet."},
        {Reached::stopped, Level::warning, "Stop called while already stopped, returning previous result.", {}},
        {Reached::stopFailed,
         Level::warning,
         "Stop called while previously failed, rethrowing same error again.",
         {{"error", "1 errors:\n  no end"}},
         "no end"},
        {Reached::prepareFailed,
         Level::error,
         "Cannot stop a recorder that failed preparation, rethrowing preparation error inside a PartialResultError.",
         {},
         "no source"},
        {Reached::abortedByUser,
         Level::warning,
         "Stop called while already aborted, returning previous result.",
         {{"abortReason", "userStopped"}}},
        {Reached::interrupted,
         Level::warning,
         "Stop called while already aborted, returning previous result.",
         {{"abortReason", "interrupted"}, {"error", "source lost"}}},
        {Reached::abortFailed,
         Level::warning,
         "Stop called while already aborted, throwing PartialResultError.",
         {{"abortReason", "failed"}, {"error", "1 errors:\n  no end"}},
         "Called stop while recorder was already aborted and failed to stop gracefully."},
    };
    for (const Row& row : rows) {
        ConductorBench bench;
        bench.recorder().files = {{Type::audio, "a.m4a"}};
        bench.reach(row.state);
        const auto outcome = outcomeOf(bench.conductor->stop("T"));
        LogMetadata metadata = row.metadata;
        metadata["traceID"] = "T";
        EXPECT_TRUE(bench.log.has(row.level, row.line, metadata));
        if (row.outcome == "returned") {
            EXPECT_EQ(describe(outcome), "returned") << row.line;
            continue;
        }
        const auto error = partialResultError(outcome);
        ASSERT_EQ(error.groupedErrors().errors().size(), 1U);
        EXPECT_EQ(debugDescription(error.groupedErrors().errors().front()), row.outcome);
        EXPECT_EQ(error.result().bundleURL, bench.bundleURL);
        EXPECT_LE(bench.recorder().finishing.runs(), 1);
    }
}

TEST(ConductorStop, WaitsForAPreparationAndThenDiscardsWhatItPrepared) {
    ConductorBench bench;
    bench.reach(Reached::preparing);
    const auto stop = spawn(bench.conductor->stop("X"));
    Activity::waitUntilIdle();
    EXPECT_TRUE(bench.log.has(Level::warning, "Stop called while still preparing, waiting for completion.",
                              {{"traceID", "X"}}));
    bench.letGo();
    EXPECT_EQ(outcomeOf(stop.value()).value().bundleInfo, ZVBundleInfo::empty);
    EXPECT_TRUE(bench.log.has(Level::debug, "Stop resumed after state change.", {{"traceID", "X"}}));
    EXPECT_EQ(bench.recorder().finishing.runs(), 0);
}

TEST(ConductorStop, ASecondStopGetsTheOutcomeOfTheFirst) {
    for (const bool fails : {false, true}) {
        ConductorBench bench;
        bench.recorder().files = {{Type::audio, "a.m4a"}};
        if (fails) {
            bench.recorder().finishing.failWith(failure("no end"));
        }
        bench.reach(Reached::stopping);
        const auto second = spawn(bench.conductor->stop("X"));
        Activity::waitUntilIdle();
        EXPECT_TRUE(bench.log.has(Level::warning, "Stop called while already stopping, waiting for completion.",
                                  {{"traceID", "X"}}));
        bench.letGo();
        const auto outcome = outcomeOf(second.value());
        EXPECT_EQ(describe(outcome), fails ? "1 errors:\n  no end" : "returned");
        EXPECT_EQ(describe(bench.stop()), describe(outcome)) << "and so does a third";
        EXPECT_TRUE(bench.log.has(Level::debug, "Stop resumed after state change.", {{"traceID", "X"}}));
        EXPECT_EQ(bench.recorder().finishing.runs(), 1);
    }
}

TEST(ConductorStop, CancellationDoesNotCutOffTheClosingOfFiles) {
    ConductorBench bench;
    bench.recorder().files = {{Type::audio, "a.m4a"}};
    bench.reach(Reached::recording);
    bench.recorder().finishing.hold();
    const auto stop = spawn(bench.conductor->stop("X"));
    Activity::waitUntilIdle();
    stop.cancel();
    Activity::waitUntilIdle();
    EXPECT_FALSE(bench.recorder().finishing.wasCancelled());
    bench.letGo();
    EXPECT_EQ(outcomeOf(stop.value()).value().bundleInfo.files.size(), 1U);
}

TEST(ConductorStop, CancellationDoesNotEndTheWaitForAnotherStop) {
    ConductorBench bench;
    bench.reach(Reached::stopping);
    const auto second = spawn(bench.conductor->stop("X"));
    Activity::waitUntilIdle();
    second.cancel();
    Activity::waitUntilIdle();
    bench.letGo();
    EXPECT_EQ(describe(outcomeOf(second.value())), "returned") << "a stop throws partial results only";
}

TEST(ConductorStop, ListsTheFilesInTheOrderOfTheSchemaWhateverRecorderEndsFirst) {
    ConductorBench bench(3);
    bench.recorder(0).files = {{Type::screen, "s.mov", std::vector<std::string>{"s.json"}}, {Type::mouse, "s.json"}};
    bench.recorder(2).files = {{Type::audio, "a.m4a"}};
    bench.reach(Reached::recording);
    bench.recorder(0).finishing.hold();
    const auto stop = spawn(bench.conductor->stop("X"));
    Activity::waitUntilIdle();
    EXPECT_EQ(bench.recorder(2).finishing.runs(), 1) << "recorders finish at once";
    bench.recorder(0).finishing.release();

    const ZVRecorder::Result result = outcomeOf(stop.value()).value();
    EXPECT_EQ(result.bundleURL, bench.bundleURL);
    const std::vector<ZVBundleInfo::FileAsset> expected{
        {Type::screen, "s.mov", std::vector<std::string>{"s.json"}}, {Type::mouse, "s.json"}, {Type::audio, "a.m4a"}};
    EXPECT_EQ(result.bundleInfo.files, expected);
    std::ifstream manifest(bench.manifest());
    const std::string bytes{std::istreambuf_iterator<char>(manifest), std::istreambuf_iterator<char>()};
    EXPECT_EQ(bytes, result.bundleInfo.encode());
}

TEST(ConductorStop, AFailingRecorderKeepsNoneOfTheOthersFromTheirFiles) {
    ConductorBench bench(3);
    bench.recorder(0).finishing.failWith(failure("first"));
    bench.recorder(0).files = {{Type::screen, "lost.mov"}};
    bench.recorder(1).files = {{Type::audio, "a.m4a"}};
    bench.recorder(2).finishing.failWith(failure("second"));
    bench.reach(Reached::recording);
    const auto error = partialResultError(bench.stop());
    EXPECT_EQ(error.debugDescription(), "2 errors:\n  first\n  second");
    EXPECT_EQ(error.localizedDescription(), "Unexpected error.\nfirst and 1 other errors.");
    EXPECT_EQ(error.result().bundleInfo.files, (std::vector<ZVBundleInfo::FileAsset>{{Type::audio, "a.m4a"}}));
    EXPECT_TRUE(std::filesystem::exists(bench.manifest())) << "written also after errors";

    const auto statistics = bench.conductor->statistics();
    EXPECT_TRUE(bench.log.has(Level::error, "Internal recorder failed to stop.",
                              {{"recorderType", "ScriptedRecorder"}, {"recorderID", "recorder0"}, {"error", "first"}}));
    EXPECT_TRUE(bench.log.has(Level::error, "Stopped recording with errors.",
                              {{"errors.count", "2"},
                               {"recordFrom", fmt::format("{}", statistics.recordFrom)},
                               {"recordUntil", fmt::format("{}", statistics.recordUntil)},
                               {"duration", fmt::format("{}", statistics.recordUntil - statistics.recordFrom)}}));
    EXPECT_EQ(bench.log.count(Level::info, "Stopped recording."), 0U);
}

TEST(ConductorStop, AManifestThatCanNotBeWrittenIsTheLastOfTheErrors) {
    ConductorBench bench;
    bench.recorder().finishing.failWith(failure("no end"));
    bench.reach(Reached::recording);
    std::filesystem::remove_all(bench.bundleURL);
    const auto error = partialResultError(bench.stop());
    const auto& errors = error.groupedErrors().errors();
    ASSERT_EQ(errors.size(), 2U);
    EXPECT_EQ(debugDescription(errors[0]), "no end");
    EXPECT_EQ(ZVError::_uncaught(errors[1]).errorGroup(), "NSError domain:NSPOSIXErrorDomain code:2");
    EXPECT_TRUE(bench.log.has(
        Level::error, "Failed to write zorvane.json to output folder.",
        {{"error", debugDescription(errors[1])}, {"result", "file://" + bench.bundleURL.string() + "/: 0 files"}}));
    EXPECT_EQ(bench.log.count(Level::info, "Wrote zorvane.json to output folder."), 0U);
}

TEST(ConductorStop, DiscardingLeavesAnEmptyDirectory) {
    ConductorBench bench;
    bench.recorder().files = {{Type::audio, "a.m4a"}};
    bench.reach(Reached::prepared);
    std::ofstream(bench.bundleURL / "a.m4a") << "sound";
    EXPECT_EQ(bench.stop().value().bundleInfo, ZVBundleInfo::empty);
    EXPECT_TRUE(std::filesystem::is_empty(bench.bundleURL));
    EXPECT_EQ(bench.recorder().finishing.runs(), 0);
}

TEST(ConductorStop, ADiscardThatCanNotRemoveFailsAndMakesNothing) {
    ConductorBench bench;
    bench.reach(Reached::prepared);
    std::filesystem::remove_all(bench.bundleURL);
    const auto error = partialResultError(bench.stop());
    ASSERT_EQ(error.groupedErrors().errors().size(), 1U);
    EXPECT_EQ(ZVError::_uncaught(error.groupedErrors().errors().front()).errorGroup(),
              "NSError domain:NSPOSIXErrorDomain code:2");
    EXPECT_FALSE(std::filesystem::exists(bench.bundleURL));
    EXPECT_EQ(describe(bench.stop()), error.debugDescription()) << "the state is final";
}

TEST(ConductorStop, BeforePreparationEndsTheRecorderForGood) {
    ConductorBench bench;
    const auto first = partialResultError(bench.stop());
    EXPECT_EQ(first.result(), (ZVRecorder::Result{bench.bundleURL, ZVBundleInfo::empty}));
    EXPECT_EQ(describe(bench.prepare()), "Prepare called on recorder that already has stopped recording.");
    EXPECT_EQ(partialResultError(bench.stop()).debugDescription(), first.debugDescription());
    EXPECT_FALSE(std::filesystem::exists(bench.bundleURL));
}

}  // namespace
}  // namespace zorvane
