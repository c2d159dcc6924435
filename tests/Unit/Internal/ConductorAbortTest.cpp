#include <gtest/gtest.h>

#include "tests/Support/ConductorBench.hpp"

namespace zorvane {
namespace {

using Kind = ZVRecorder::AbortReason::Kind;
using Level = ZVLogLevel;
using Reached = ConductorBench::Reached;
using Type = ZVBundleInfo::FileAssetType;

const AbortSignal lost = AbortSignal::interrupted(failure("source lost"));

TEST(ConductorAbort, ASignalWhileRecordingClosesAllFilesAndSaysWhy) {
    struct Row {
        AbortSignal signal;
        Kind kind;
        std::string printedSignal;
        std::string printedReason;
    };
    for (const Row& row : {Row{AbortSignal::userStopped(), Kind::userStopped, "userStopped", "userStopped"},
                           Row{lost, Kind::interrupted, "interrupted: source lost", "interrupted: source lost"}}) {
        ConductorBench bench(2);
        bench.recorder(1).files = {{Type::audio, "a.m4a"}};
        bench.reach(Reached::recording);
        bench.signal(row.signal);
        ASSERT_EQ(bench.aborts->size(), 1U);
        const ZVRecorder::AbortReason& reason = bench.aborts->front();
        EXPECT_EQ(reason.kind(), row.kind);
        EXPECT_EQ(reason.error(), row.signal.error());
        EXPECT_EQ(reason.result().bundleInfo.files.size(), 1U);
        EXPECT_EQ(bench.recorder(0).finishing.runs(), 1);
        EXPECT_TRUE(std::filesystem::exists(bench.manifest()));
        EXPECT_TRUE(
            bench.log.has(Level::debug, "Aborting recording from recording state.", {{"signal", row.printedSignal}}));
        EXPECT_TRUE(bench.log.has(Level::debug, "Stopping recording from recording state."));
        EXPECT_TRUE(bench.log.has(Level::info, "Aborted recording.", {{"reason", row.printedReason}}));
        EXPECT_EQ(bench.stop().value(), reason.result());
    }
}

TEST(ConductorAbort, HasOneTraceIDOfItsOwnInAllItsLines) {
    ConductorBench bench;
    bench.reach(Reached::abortedByUser);
    std::string traceID;
    for (const auto& message : bench.log.messages()) {
        if (message.message == "Aborting recording from recording state.") {
            traceID = message.metadata.at("traceID");
        }
    }
    EXPECT_EQ(traceID.size(), 5U);
    EXPECT_TRUE(bench.log.has(Level::info, "Stopped recording.", {{"traceID", traceID}}));
    EXPECT_TRUE(bench.log.has(Level::info, "Aborted recording.", {{"traceID", traceID}}));
}

TEST(ConductorAbort, ASignalOfAPreparedRecorderDiscardsTheRecording) {
    ConductorBench bench;
    bench.reach(Reached::prepared);
    bench.signal(lost);
    ASSERT_EQ(bench.aborts->size(), 1U);
    EXPECT_EQ(bench.aborts->front().kind(), Kind::interrupted);
    EXPECT_EQ(bench.aborts->front().result().bundleInfo, ZVBundleInfo::empty);
    EXPECT_TRUE(std::filesystem::is_empty(bench.bundleURL));
    EXPECT_EQ(bench.recorder().finishing.runs(), 0);
    EXPECT_TRUE(bench.log.has(Level::debug, "Aborting recording from prepared state.",
                              {{"signal", "interrupted: source lost"}}));
    EXPECT_EQ(describe(bench.start()), "Start called on recorder that already has stopped recording.");
}

TEST(ConductorAbort, AFailureToCloseOrToDiscardIsTheReasonWhateverTheSignal) {
    for (const Reached state : {Reached::recording, Reached::prepared}) {
        ConductorBench bench;
        bench.reach(state);
        std::filesystem::remove_all(bench.bundleURL);
        bench.signal(AbortSignal::userStopped());
        ASSERT_EQ(bench.aborts->size(), 1U);
        const ZVRecorder::AbortReason& reason = bench.aborts->front();
        EXPECT_EQ(reason.kind(), Kind::failed);
        EXPECT_THROW(std::rethrow_exception(reason.error()), GroupedErrors);
        EXPECT_EQ(reason.result(), (ZVRecorder::Result{bench.bundleURL, ZVBundleInfo::empty}));
        EXPECT_TRUE(bench.log.has(Level::info, "Aborted recording.",
                                  {{"reason", "failed: " + debugDescription(reason.error())}}));
    }
}

TEST(ConductorAbort, ASignalDuringPreparationWaitsForItsEnd) {
    for (const bool fails : {false, true}) {
        ConductorBench bench;
        if (fails) {
            bench.recorder().preparing.failWith(failure("no source"));
        }
        bench.reach(Reached::preparing);
        bench.signal(lost);
        EXPECT_TRUE(bench.log.has(Level::info, "Abort called while still preparing, waiting for completion."));
        EXPECT_TRUE(bench.aborts->empty());
        bench.letGo();
        EXPECT_TRUE(bench.log.has(Level::debug, "Abort resumed after state change."));
        EXPECT_EQ(bench.aborts->size(), fails ? 0U : 1U);
    }
}

TEST(ConductorAbort, ASignalDuringThePreparationOfAStartFinishesTheRecording) {
    ConductorBench bench;
    bench.recorder().preparing.hold();
    const auto start = spawn(bench.conductor->start("S"));
    Activity::waitUntilIdle();
    bench.signal(lost);
    bench.letGo();
    EXPECT_EQ(describe(outcomeOf(start.value())), "returned");
    EXPECT_EQ(bench.recorder().finishing.runs(), 1);
    EXPECT_TRUE(std::filesystem::exists(bench.manifest()));
    EXPECT_EQ(bench.aborts->size(), 1U);
}

TEST(ConductorAbort, ASignalAfterTheEndIsDropped) {
    const std::vector<std::pair<Reached, std::string>> rows{
        {Reached::prepareFailed, "prepareFailed"},
        {Reached::stopping, "stopping"},
        {Reached::stopped, "stopped"},
        {Reached::stopFailed, "stopFailed"},
        {Reached::abortedByUser, "aborted"},
        {Reached::interrupted, "aborted"},
    };
    for (const auto& [state, name] : rows) {
        ConductorBench bench;
        bench.reach(state);
        const std::size_t before = bench.aborts->size();
        bench.signal(lost);
        EXPECT_TRUE(bench.log.has(Level::warning,
                                  "Abort called on recorder that already has stopped recording, call will be ignored.",
                                  {{"state", name}, {"subsequentSignal", "interrupted: source lost"}}));
        EXPECT_EQ(bench.aborts->size(), before);
        bench.letGo();
    }
}

TEST(ConductorAbort, TheFirstOfManySignalsDecides) {
    ConductorBench bench(2);
    bench.recorder(0).finishing.hold();
    bench.reach(Reached::recording);
    bench.signal(AbortSignal::userStopped(), 0);
    bench.signal(lost, 1);
    bench.letGo();
    ASSERT_EQ(bench.aborts->size(), 1U);
    EXPECT_EQ(bench.aborts->front().kind(), Kind::userStopped);
    EXPECT_TRUE(bench.log.has(Level::warning,
                              "Abort called on recorder that already has stopped recording, call will be ignored.",
                              {{"state", "stopping"}, {"subsequentSignal", "interrupted: source lost"}}));
}

TEST(ConductorAbort, AStopThatWaitedForAnAbortGetsItsResult) {
    ConductorBench bench;
    bench.recorder().files = {{Type::audio, "a.m4a"}};
    bench.recorder().finishing.hold();
    bench.reach(Reached::recording);
    bench.signal(lost);
    const auto stop = spawn(bench.conductor->stop("X"));
    Activity::waitUntilIdle();
    bench.letGo();
    EXPECT_EQ(outcomeOf(stop.value()).value(), bench.aborts->front().result());
    EXPECT_TRUE(bench.log.has(Level::warning, "Stop called while already aborted, returning previous result.",
                              {{"traceID", "X"}}));
}

TEST(ConductorAbort, AStopBegunInTheHandlerFindsTheRecordingAborted) {
    ConductorBench bench;
    std::optional<TaskHandle<ZVRecorder::Result>> stop;
    const std::weak_ptr<Conductor> conductor = bench.conductor;
    outcomeOf(bench.conductor->setOnAbort([&](const auto&) { stop = spawn(conductor.lock()->stop("X")); }));
    bench.reach(Reached::interrupted);
    EXPECT_EQ(describe(outcomeOf(stop->value())), "returned");
    EXPECT_TRUE(bench.log.has(Level::warning, "Stop called while already aborted, returning previous result.",
                              {{"traceID", "X"}}));
}

TEST(ConductorAbort, AHandlerThatThrowsIsLoggedAndEndsNothing) {
    ConductorBench bench;
    outcomeOf(bench.conductor->setOnAbort([](const auto&) { throw ZVError::internalError("host"); }));
    bench.reach(Reached::interrupted);
    EXPECT_TRUE(bench.log.has(Level::error, "The abort handler threw.", {{"error", "host"}}));
    EXPECT_EQ(describe(bench.stop()), "returned");
}

}  // namespace
}  // namespace zorvane
