#include "Zorvane/Internal/ZVUserPreferred.hpp"

#include <gmock/gmock.h>

#include <future>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/Platform/Virtual/VirtualUserDefaults.hpp"
#include "Zorvane/Sources/ZVCamera.hpp"
#include "Zorvane/Sources/ZVMicrophone.hpp"
#include "Zorvane/ZVRecorder.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Support/VirtualWorld.hpp"
#include "tests/Unit/Internal/Discovery/DeviceWorld.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Level = ZVLogLevel;
using Strings = std::vector<std::string>;
using Numbers = std::vector<std::uint32_t>;

class UserPreferredTest : public ::testing::Test {
  protected:
    UserPreferredTest() {
        Platform platform;
        platform.userDefaults = defaults;
        Platform::install(platform);
    }
    ~UserPreferredTest() override { Platform::install(Platform()); }

    void store(std::string_view key, NSUserDefaultsArray value) {
        defaults->update(key, [&](const auto&) { return value; });
    }

    const std::shared_ptr<VirtualUserDefaults> defaults = std::make_shared<VirtualUserDefaults>();
    LogCapture log{ZVLogger::shared()};
};

TEST_F(UserPreferredTest, PutsTheLastUsedSourceFirstAndNamesEachOnce) {
    const auto preferred = ZVUserPreferred::shared();
    EXPECT_THAT(preferred->cameraIDs(), IsEmpty());
    for (const char* id : {"a", "b", "a", "a"}) {
        preferred->updateCamera(id);
    }
    EXPECT_THAT(preferred->cameraIDs(), ElementsAre("a", "b"));

    store("ZVPreferredDisplays", Numbers{5, 7, 5, 9});
    preferred->updateDisplay(5);
    EXPECT_THAT(preferred->displayIDs(), ElementsAre(5U, 7U, 9U));

    EXPECT_THAT(preferred->microphoneIDs(), IsEmpty()) << "kinds of sources don't mix";
}

TEST_F(UserPreferredTest, TakesAListOfAnotherTypeForAnEmptyOne) {
    store("ZVPreferredCameras", Numbers{1, 2});
    store("ZVPreferredDisplays", Strings{"1"});
    const auto preferred = ZVUserPreferred::shared();
    EXPECT_THAT(preferred->cameraIDs(), IsEmpty());
    EXPECT_THAT(preferred->displayIDs(), IsEmpty());
    preferred->updateDisplay(3);
    EXPECT_THAT(preferred->displayIDs(), ElementsAre(3U));
}

TEST_F(UserPreferredTest, LogsEachUpdate) {
    const auto preferred = ZVUserPreferred::shared();
    preferred->updateCamera("cam");
    preferred->updateMicrophone("mic");
    preferred->updateDisplay(4'000'000'000);
    EXPECT_TRUE(log.has(Level::debug, "Update preferred camera", {{"cameraID", "cam"}}));
    EXPECT_TRUE(log.has(Level::debug, "Update preferred microphone", {{"microphoneID", "mic"}}));
    EXPECT_TRUE(log.has(Level::debug, "Update preferred display", {{"displayID", "4000000000"}}));
    EXPECT_EQ(log.messages().back().category, "ZVUserPreferred");
}

TEST_F(UserPreferredTest, TakesTheSourcesOfASchemaInItsOrder) {
    using Item = ZVSchemaItem;
    ZVSchema schema;
    schema.items = {Item::webcam("mic1", "cam1"),
                    Item::display(77),
                    Item::microphone("mic2"),
                    Item::_microphone("mic3", [](const auto&) { return true; }),
                    Item::windowBasedCrop(11),
                    Item::systemAudio(),
                    Item::appleDeviceStaticOrientation("phone"),
                    Item::display(78)};
    const auto preferred = ZVUserPreferred::shared();
    preferred->updateFromSchema(schema);
    EXPECT_THAT(preferred->cameraIDs(), ElementsAre("cam1"));
    EXPECT_THAT(preferred->microphoneIDs(), ElementsAre("mic3", "mic2", "mic1"));
    EXPECT_THAT(preferred->displayIDs(), ElementsAre(78U, 77U));
    EXPECT_EQ(log.messages().at(0).message, "Update preferred camera") << "a webcam's camera comes before its sound";
}

TEST_F(UserPreferredTest, GoesOnWithAWarningIfNothingCanBeKept) {
    defaults->failUpdates(std::make_exception_ptr(NSError::posix(ENOSPC, "write", "/preferences")));
    const auto preferred = ZVUserPreferred::shared();
    preferred->updateFromSchema({.items = {ZVSchemaItem::display(1), ZVSchemaItem::display(2)}});
    EXPECT_EQ(log.count(Level::warning, "Can't keep a preferred source."), 2U);
}

/// A disk that takes its time: updates wait for the test.
class SlowUserDefaults final : public NSUserDefaults {
  public:
    std::optional<NSUserDefaultsArray> array(std::string_view key) override { return kept.array(key); }
    void update(std::string_view key, const Change& change) override {
        released.get_future().wait();
        kept.update(key, change);
    }

    std::promise<void> released;
    VirtualUserDefaults kept;
};

TEST_F(UserPreferredTest, UpdatesInTheBackgroundWhileTheCallerGoesOn) {
    const auto slow = std::make_shared<SlowUserDefaults>();
    const auto preferred = std::make_shared<ZVUserPreferred>(slow);
    preferred->updateInBackground({.items = {ZVSchemaItem::display(1)}});
    EXPECT_THAT(preferred->displayIDs(), IsEmpty());
    slow->released.set_value();
    Activity::waitUntilIdle();
    EXPECT_THAT(preferred->displayIDs(), ElementsAre(1U));
}

using ListedDevicesTest = testing::DeviceWorldTest;

TEST_F(ListedDevicesTest, FollowAnUpdateIfSomebodyHasAskedForThem) {
    happen([](const VirtualMoment& now) {
        now.plugDevice(VirtualDevice::camera("cam1", "A")).plugDevice(VirtualDevice::camera("cam2", "B"));
        now.plugDevice(VirtualDevice::microphone("mic1", "A")).plugDevice(VirtualDevice::microphone("mic2", "B"));
    });
    ZVUserPreferred::shared()->updateCamera("cam1");
    EXPECT_FALSE(log.has(Level::debug, "Starting with initial devices")) << "nobody needs the list for that";
    EXPECT_THAT(ids(ZVCamera::cameras()), ElementsAre("cam1", "cam2"));
    EXPECT_THAT(ids(ZVMicrophone::microphones()), ElementsAre("mic1", "mic2"));

    ZVUserPreferred::shared()->updateCamera("cam2");
    ZVUserPreferred::shared()->updateMicrophone("mic2");
    Activity::waitUntilIdle();
    EXPECT_THAT(ids(ZVCamera::cameras()), ElementsAre("cam2", "cam1"));
    EXPECT_THAT(ids(ZVMicrophone::microphones()), ElementsAre("mic2", "mic1"));
}

/// Records the virtual desktop's display.
class PreferringRecorderTest : public testing::VirtualWorldTest {
  protected:
    ZVRecorder makeRecorder(std::uint32_t displayID, bool updatesUserPreferred = true) {
        return ZVRecorder({ZVSchemaItem::display(displayID)}, directory.path() / "bundle",
                          ZVRecorder::Settings{.updatesUserPreferred = updatesUserPreferred});
    }
    void start(ZVRecorder& recorder) {
        clock->complete(recorder.start());
        Activity::waitUntilIdle();
    }

    TemporaryDirectory directory;
    const std::shared_ptr<const ZVUserPreferred> preferred = ZVUserPreferred::shared();
};

TEST_F(PreferringRecorderTest, AStartMakesItsSourcesThePreferredOnesAlsoWhenRecordingAlready) {
    ZVRecorder recorder = makeRecorder(77);
    start(recorder);
    EXPECT_THAT(preferred->displayIDs(), ElementsAre(77U));
    preferred->updateDisplay(5);
    start(recorder);
    EXPECT_THAT(preferred->displayIDs(), ElementsAre(77U, 5U));
}

TEST_F(PreferringRecorderTest, AStartThatFailsOrIsToldNotToLeavesThePreferencesAlone) {
    ZVRecorder unknownDisplay = makeRecorder(123);
    EXPECT_THROW(start(unknownDisplay), ZVError);
    std::filesystem::remove_all(directory.path() / "bundle");
    ZVRecorder forgetful = makeRecorder(77, false);
    start(forgetful);
    Activity::waitUntilIdle();
    EXPECT_THAT(preferred->displayIDs(), IsEmpty());
}

}  // namespace
}  // namespace zorvane
