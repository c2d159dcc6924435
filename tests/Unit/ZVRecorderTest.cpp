#include "Zorvane/ZVRecorder.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <thread>
#include <utility>

#include "tests/Support/ConductorBench.hpp"

namespace zorvane {
namespace {

using Level = ZVLogLevel;

/// A public recorder over one scripted recorder, and what it logs.
struct RecorderBench {
    LogCapture log{ZVLogger::shared()};
    TemporaryDirectory directory;
    std::filesystem::path bundleURL = directory.path() / "bundle";
    std::shared_ptr<ScriptedRecorder> scripted = std::make_shared<ScriptedRecorder>("scripted");

    ZVRecorder make(ZVRecorder::OnAbort onAbort = nullptr) {
        return ZVRecorder({customItem({scripted})}, bundleURL, std::nullopt, std::move(onAbort));
    }
};

TEST(ZVRecorder, RecordsFromPreparationToTheManifest) {
    RecorderBench bench;
    bench.scripted->files = {{ZVBundleInfo::FileAssetType::audio, "a.m4a"}};
    bench.scripted->counted = {.framesWritten = 5, .framesDropped = 1, .framesRepeated = 2};
    ZVRecorder recorder = bench.make();
    recorder.prepare().get();
    recorder.start().get();
    const ZVRecorder::Result result = recorder.stop().get();
    EXPECT_EQ(result.bundleURL, bench.bundleURL);
    EXPECT_EQ(recorder.bundleURL(), bench.bundleURL);
    EXPECT_EQ(result.bundleInfo.files.size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(bench.bundleURL / "zorvane.json"));

    const ZVRecorder::Statistics statistics = recorder.statistics();
    EXPECT_EQ(statistics.framesWritten, 5U);
    EXPECT_LE(statistics.recordFrom, statistics.recordUntil);
    EXPECT_TRUE(bench.log.has(Level::info, "Stopped recording.",
                              {{"ZVRecorder", recorder.id()}, {"Conductor", recorder.id()}}));
}

TEST(ZVRecorder, TouchesNothingAndRefusesNothingWhenMade) {
    const ZVRecorder recorder({});
    EXPECT_EQ(recorder.id().size(), 5U);
    EXPECT_FALSE(std::filesystem::exists(recorder.bundleURL()));
    EXPECT_TRUE(recorder.bundleURL().string().ends_with("-" + recorder.id() + ".zorvane"));
    EXPECT_TRUE(recorder.settings().allowFrameReordering);
    EXPECT_TRUE(recorder.settings().updatesUserPreferred);
    EXPECT_EQ(recorder.debugDescription(), "ZVRecorder: 0 recorder items");
    EXPECT_EQ(ZVRecorder({ZVRecorder::SchemaItem::display(1), ZVRecorder::SchemaItem::display(1)}).debugDescription(),
              "ZVRecorder: 2 recorder items");
}

TEST(ZVRecorder, GivesEachCallATraceIDOfItsOwn) {
    RecorderBench bench;
    ZVRecorder recorder = bench.make();
    recorder.prepare().get();
    recorder.start().get();
    std::string ofPrepare;
    std::string ofStart;
    for (const auto& message : bench.log.messages()) {
        if (message.message == "Prepared, ready to start recording.") {
            ofPrepare = message.metadata.at("traceID");
        } else if (message.message == "Started recording.") {
            ofStart = message.metadata.at("traceID");
        }
    }
    EXPECT_EQ(ofPrepare.size(), 5U);
    EXPECT_EQ(ofStart.size(), 5U);
    EXPECT_NE(ofPrepare, ofStart);
    recorder.stop().get();
}

TEST(ZVRecorder, LogsAndRethrowsWhatFails) {
    RecorderBench bench;
    bench.scripted->preparing.failWith(failure("no source"));
    ZVRecorder recorder = bench.make();
    EXPECT_EQ(describe(outcomeOf(recorder.start())), "no source");
    EXPECT_TRUE(bench.log.has(Level::error, "Failed to start: no source", {{"ZVRecorder", recorder.id()}}));

    const auto error = partialResultError(outcomeOf(recorder.stop()));
    EXPECT_EQ(error.result(), (ZVRecorder::Result{bench.bundleURL, ZVBundleInfo::empty}));
    EXPECT_STREQ(error.what(), "Unexpected error.\nno source");
    EXPECT_TRUE(bench.log.has(Level::error, "Failed to stop: 1 errors:\n  no source"));

    const std::string refused = "Invalid to set the onAbort handler after prepare has been called.";
    EXPECT_EQ(describe(outcomeOf(recorder.setAbortHander([](const auto&) {}))), refused);
    EXPECT_TRUE(bench.log.has(Level::error, "Failed to set abort handler: " + refused));
}

TEST(ZVRecorder, TellsAnAbortToTheHandlerOrElseToTheLog) {
    for (const bool hasHandler : {true, false}) {
        RecorderBench bench;
        std::vector<ZVRecorder::AbortReason> heard;
        ZVRecorder recorder = bench.make();
        if (hasHandler) {
            recorder.setAbortHander([&](const ZVRecorder::AbortReason& reason) { heard.push_back(reason); }).get();
        }
        recorder.start().get();
        bench.scripted->signal(AbortSignal::userStopped());
        Activity::waitUntilIdle();
        EXPECT_EQ(heard.size(), hasHandler ? 1U : 0U);
        EXPECT_EQ(static_cast<bool>(bench.log.has(Level::warning, "Aborted with no abort handler set.",
                                                  {{"reason", "userStopped"}, {"ZVRecorder", recorder.id()}})),
                  !hasHandler);
    }
}

TEST(ZVRecorder, DestroyedWhileRecordingLetsItsSourcesGoAndIsDeafToTheirSignals) {
    RecorderBench bench;
    bool aborted = false;
    std::optional<ZVRecorder> recorder(bench.make([&](const auto&) { aborted = true; }));
    recorder->start().get();
    const AbortHandler signal = bench.scripted->signal;
    const std::weak_ptr<ScriptedRecorder> scripted = std::exchange(bench.scripted, nullptr);
    recorder.reset();
    Activity::waitUntilIdle();
    EXPECT_TRUE(scripted.expired());
    signal(AbortSignal::userStopped());
    Activity::waitUntilIdle();
    EXPECT_FALSE(aborted);
    EXPECT_FALSE(std::filesystem::exists(bench.bundleURL / "zorvane.json"));
}

TEST(ZVRecorder, ATaskKeepsWhatItNeedsWhenTheRecorderGoes) {
    RecorderBench bench;
    bench.scripted->finishing.hold();
    std::optional<ZVRecorder> recorder(bench.make());
    recorder->start().get();
    const auto stop = spawn(recorder->stop());
    Activity::waitUntilIdle();
    recorder.reset();
    bench.scripted->finishing.release();
    EXPECT_EQ(outcomeOf(stop.value()).value().bundleURL, bench.bundleURL);
}

TEST(ZVRecorder, ASignalThatRacesWithDestructionIsHeardOrDropped) {
    for (int round = 0; round < 50; ++round) {
        RecorderBench bench;
        std::optional<ZVRecorder> recorder(bench.make([](const auto&) {}));
        recorder->start().get();
        std::thread source([signal = bench.scripted->signal] { signal(AbortSignal::userStopped()); });
        recorder.reset();
        source.join();
        Activity::waitUntilIdle();
    }
}

}  // namespace
}  // namespace zorvane
