#include "Zorvane/Internal/Recorders/TopWindowInfoRecorder.hpp"

#include <fstream>
#include <iterator>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/ZVWindowPresence.hpp"
#include "tests/Support/AbortSignals.hpp"
#include "tests/Support/FileSizeLimit.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Support/VirtualWindows.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using testing::window;

/// What one element of the file says, for comparison with a table.
struct Entry {
    double time;
    std::uint32_t windowID;  // 0 for an absence
    CGRect place;

    bool operator==(const Entry&) const = default;
    friend void PrintTo(const Entry& entry, std::ostream* stream) {
        *stream << entry.time << " s: window " << entry.windowID << " at " << debugDescription(entry.place);
    }
};

Entry entryOf(const ZVWindowPresence& presence) {
    const auto* info = std::get_if<ZVWindowInfo>(&presence.payload());
    return {presence.time().seconds(), info ? info->windowID : 0,
            info ? CGRect::make(info->x, info->y, info->width, info->height) : CGRect()};
}

/// Records a crop, 200 points wide and 100 high, of a display of 320 by 200.
class TopWindowInfoRecorderTest : public testing::VirtualWorldTest {
  protected:
    TopWindowInfoRecorderTest() { desktop->now().setWindows({window(1, testing::someApplication, inCrop(0.25))}); }
    ~TopWindowInfoRecorderTest() override {
        recorder = nullptr;
        Activity::waitUntilIdle();
        EXPECT_EQ(desktop->sceneHandlers().windowsChanged->size(), 0U) << "something goes on";
    }

    /// The frame of a window of half the crop's size.
    static CGRect inCrop(double x, double y = 0) { return CGRect::make(100 + x * 200, 50 + y * 100, 100, 50); }

    void makeRecorder(const CGRect& crop = CGRect::make(100, 50, 200, 100)) {
        const RecorderContext context{.bundleURL = directory.path(),
                                      .recordingInterval = StableRecordingInterval(interval),
                                      .logger = log.logger<TopWindowInfoRecorderTest>(),
                                      .onAbort = abortSignals.handler()};
        recorder = std::make_shared<TopWindowInfoRecorder>("item1", file, 1, crop, context);
    }
    void prepare() {
        makeRecorder();
        clock->complete(recorder->prepare());
        advance(0.5);
    }
    void start() { interval->start(hostSeconds(secondsNow())); }
    auto stop() {
        interval->stop(hostSeconds(secondsNow()));
        return clock->complete(recorder->finish());
    }
    std::vector<Entry> entries() const {
        std::vector<Entry> entries;
        for (const ZVWindowPresence& presence : ZVWindowPresence::read(file)) {
            entries.push_back(entryOf(presence));
        }
        return entries;
    }
    std::vector<std::string> signals() const { return abortSignals.seen(); }

    const TemporaryDirectory directory;
    const std::filesystem::path file = directory.path() / "display-77.top-windows.json";
    const std::shared_ptr<VolatileRecordingInterval> interval = std::make_shared<VolatileRecordingInterval>();
    LogCapture log;
    testing::AbortSignals abortSignals;
    std::shared_ptr<TopWindowInfoRecorder> recorder;
};

TEST_F(TopWindowInfoRecorderTest, TheFileTellsOfTheWindowAtTheStartOfEachChangeAndOfTheWindowAtTheStop) {
    desktop->now().openWindow(window(2, testing::someApplication, inCrop(0))).raiseWindow(1);
    prepare();
    desktop->now().moveWindow(1, inCrop(0.5, 0.5));
    advance(0.5);
    start();
    advance(1);
    desktop->now().moveWindow(1, inCrop(-0.25, 0.75));
    advance(1);
    desktop->now().closeWindow(1);
    advance(0.05);
    desktop->now().moveWindow(2, inCrop(0, 0.5));
    advance(0.95);
    const auto assets = stop();
    EXPECT_EQ(assets, (std::vector<ZVBundleInfo::FileAsset>{{.type = ZVBundleInfo::FileAssetType::topWindow,
                                                             .filename = "display-77.top-windows.json"}}));
    const auto seen = entries();
    ASSERT_EQ(seen.size(), 5U);
    EXPECT_EQ(seen[0], (Entry{0, 1, CGRect::make(0.5, 0.5, 0.5, 0.5)}));
    EXPECT_EQ(seen[1], (Entry{1, 1, CGRect::make(-0.25, 0.75, 0.5, 0.5)}));
    EXPECT_EQ(seen[2], (Entry{2, 0, CGRect()})) << "gone at once";
    EXPECT_EQ(seen[3].windowID, 2U);
    EXPECT_NEAR(seen[3].time, 2.05, 0.06) << "with the next list";
    EXPECT_EQ(seen[3].place, CGRect::make(0, 0.5, 0.5, 0.5));
    EXPECT_EQ(seen[4], (Entry{3, 2, CGRect::make(0, 0.5, 0.5, 0.5)}));
    EXPECT_TRUE(log.has(ZVLogLevel::trace, "Preparing."));
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Top window tracker stopped."));
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Finished."));
    EXPECT_EQ(signals(), std::vector<std::string>());
}

TEST_F(TopWindowInfoRecorderTest, WithoutAWindowTheStartAndTheStopSaySo) {
    desktop->now().closeWindow(1);
    prepare();
    start();
    advance(2);
    stop();
    EXPECT_EQ(entries(), (std::vector<Entry>{{0, 0, CGRect()}, {2, 0, CGRect()}}));
}

TEST_F(TopWindowInfoRecorderTest, AWindowThatLeavesTheCropStaysWhereItWasSeenLast) {
    prepare();
    start();
    advance(1);
    desktop->now().moveWindow(1, CGRect::make(0, 0, 100, 50));  // touches a corner
    advance(1);
    stop();
    EXPECT_EQ(entries(), (std::vector<Entry>{{0, 1, CGRect::make(0.25, 0, 0.5, 0.5)}}));
    EXPECT_EQ(log.count(ZVLogLevel::debug, "Switching to top window outside crop region, skipping"), 2U);
}

TEST_F(TopWindowInfoRecorderTest, TitlesComeThroughWhateverTheyAre) {
    const std::vector<std::optional<std::string>> titles{
        "\"quoted\" \\ and / slashed",
        "line\nfeed\t\x01",
        "\xF0\x9F\xAA\x9F \xE7\xAA\x93",
        "bad \xFF byte",
        "",
        std::nullopt,
    };
    desktop->now().retitleWindow(1, "first");
    prepare();
    start();
    for (const auto& title : titles) {
        desktop->now().retitleWindow(1, title);
        advance(0.25);
    }
    stop();
    std::vector<std::optional<std::string>> seen;
    for (const ZVWindowPresence& presence : ZVWindowPresence::read(file)) {
        seen.push_back(std::get<ZVWindowInfo>(presence.payload()).windowTitle);
    }
    auto expected = titles;
    expected[3] = "bad \xEF\xBF\xBD byte";
    expected.insert(expected.begin(), "first");
    expected.push_back(std::nullopt);  // the stop
    EXPECT_EQ(seen, expected);
}

TEST_F(TopWindowInfoRecorderTest, AStopRightAfterTheStartLeavesAWholeFile) {
    makeRecorder();
    clock->complete(recorder->prepare());
    start();
    advance(0.02);
    stop();
    const CGRect place = CGRect::make(0.25, 0, 0.5, 0.5);
    EXPECT_EQ(entries(), (std::vector<Entry>{{0, 1, place}, {0.02, 1, place}}));
}

TEST_F(TopWindowInfoRecorderTest, AFileThatCanNotBeWrittenAbortsTheRecording) {
    prepare();
    {
        const testing::FileSizeLimit full(10);
        start();
        desktop->now().moveWindow(1, inCrop(0.5));
        advance(0.5);
    }
    EXPECT_EQ(signals().size(), 1U);
    EXPECT_EQ(log.count(ZVLogLevel::error, "Top window tracker stopped with error, aborting."), 1U);
    advance(0.5);
    EXPECT_EQ(desktop->sceneHandlers().windowsChanged->size(), 0U) << "it goes on";
}

TEST_F(TopWindowInfoRecorderTest, CancellingAndDestroyingEndTheMonitoring) {
    prepare();
    clock->complete(recorder->cancel());
    EXPECT_EQ(desktop->sceneHandlers().windowsChanged->size(), 0U);
    std::filesystem::remove(file);
    prepare();
    EXPECT_EQ(desktop->sceneHandlers().windowsChanged->size(), 1U);
}

TEST_F(TopWindowInfoRecorderTest, AnEmptyCropAndAFileThatIsThereAreRefused) {
    EXPECT_THROW(makeRecorder(CGRect::make(100, 50, 0, 100)), ZVError);
    EXPECT_FALSE(std::filesystem::exists(file));
    std::ofstream(file) << "mine";
    EXPECT_THROW(makeRecorder(), ZVError);
}

}  // namespace
}  // namespace zorvane
