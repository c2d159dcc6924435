#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Zorvane/ZVRecorder.hpp"
#include "tests/Support/InputEventText.hpp"
#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;
using Item = ZVSchemaItem;

/// Whole recordings, as a host makes them.
class InputSideFileTest : public testing::VirtualWorldTest {
  protected:
    ZVRecorder::Result record(std::vector<Item> items, double seconds) {
        ZVRecorder recorder(std::move(items), directory.path() / "bundle");
        clock->complete(recorder.prepare());
        advance(0.1);
        clock->complete(recorder.start());
        start = secondsNow();
        act();
        advance(seconds);
        return clock->complete(recorder.stop());
    }

    /// In the recording's first second.
    void act() const {
        const VirtualKey f5{.keycode = 96};
        desktop->at(start + 0.25).movePointer({{32, 20}});
        desktop->at(start + 0.5).pressButton(1).releaseButton(1);
        desktop->at(start + 0.75).pressKey(f5).releaseKey(f5);
    }

    static std::vector<std::string> files(const ZVRecorder::Result& result) {
        std::vector<std::string> names;
        for (const ZVBundleInfo::FileAsset& file : result.bundleInfo.files) {
            names.push_back(std::string(rawValue(file.type)) + " " + file.filename);
        }
        return names;
    }

    const TemporaryDirectory directory;
    double start = 0;
};

TEST_F(InputSideFileTest, ADisplayHasAllOfItBesideThePicture) {
    desktop->now().movePointer({{160, 100}});
    const auto result = record({Item::display(77, {.mouseEvents = true, .keyboardEvents = true}, "screen.mov")}, 1);
    EXPECT_THAT(files(result), ElementsAre("screen screen.mov", "mouse screen.input-events.json"));
    EXPECT_THAT(testing::textOfFile(result.bundleURL / "screen.input-events.json"),
                ElementsAre("0.250 moved arrow 0.1,0.1", "0.500 down secondary arrow 0.1,0.1",
                            "0.500 up secondary arrow 0.1,0.1", "0.750 down F5", "0.750 up F5"));
}

TEST_F(InputSideFileTest, AWindowCropTellsPlacesInTheWindowWhateverIsRecordedBeside) {
    desktop->now().movePointer({{160, 100}});
    VirtualWindow window;
    window.window.windowID = 5;
    window.window.frame = CGRect::make(16, 10, 32, 40);
    window.window.isOnScreen = true;
    desktop->now().setWindows({window});
    const auto result =
        record({Item::windowBasedCrop(5, {.mouseEvents = true}), Item::display(77, {.keyboardEvents = true})}, 1);
    EXPECT_THAT(files(result), UnorderedElementsAre("screen windowcrop-5.mov", "mouse windowcrop-5.input-events.json",
                                                    "screen display-77.mov", "mouse display-77.input-events.json"));
    EXPECT_THAT(testing::textOfFile(result.bundleURL / "windowcrop-5.input-events.json"),
                ElementsAre("0.250 moved arrow 0.5,0.25", "0.500 down secondary arrow 0.5,0.25",
                            "0.500 up secondary arrow 0.5,0.25"));
    EXPECT_THAT(testing::textOfFile(result.bundleURL / "display-77.input-events.json"),
                ElementsAre("0.750 down F5", "0.750 up F5"));
}

TEST_F(InputSideFileTest, WithoutBothThereIsNone) {
    const auto result = record({Item::display(77)}, 1);
    EXPECT_THAT(files(result), ElementsAre("screen display-77.mov"));
    EXPECT_EQ(desktop->eventHandlers()->size(), 0U);
}

}  // namespace
}  // namespace zorvane
