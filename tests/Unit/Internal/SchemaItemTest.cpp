#include "Zorvane/Internal/SchemaItem.hpp"

#include <gtest/gtest.h>

#include <tuple>

#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/ZVRecorder.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {
namespace {

using Item = ZVRecorder::SchemaItem;

template <class Payload>
const Payload& payload(const Item& item) {
    return std::get<Payload>(item.internalItem().payload());
}

std::string filename(const ZVOutputForm& output, std::string_view fallback) {
    const OutputDescription description = outputDescription(output, "/bundle", fallback);
    return std::get<OutputDescription::SingleFile>(description.form).url.string();
}

TEST(SchemaItem, DisplayFactoriesKeepWhatTheHostAskedFor) {
    const ZVRecorder::DisplayOptions options{
        .excluding = {ZVRecorder::ScreenRecordingExcludeOptions::currentProcess},
        .colorSpace = ZVColorSpace::displayP3,
        .showsCursor = false,
        .mouseEvents = true,
        .keyboardEvents = false,
        .includeAudio = true,
    };
    const Item plain = Item::display(5, options, "screen.mov");
    const auto& display = payload<DisplaySchemaItem>(plain);
    EXPECT_EQ(display.displayID, 5U);
    EXPECT_EQ(display.excludingOptions, options.excluding);
    EXPECT_EQ(display.colorSpace, ZVColorSpace::displayP3);
    EXPECT_EQ(std::tuple(display.captureAudio, display.showsCursor, display.mouseEvents, display.keyboardEvents,
                         display.topWindowInfo),
              std::tuple(true, false, true, false, false));
    EXPECT_EQ(filename(display.outputOptions.form(), "x"), "/bundle/screen.mov");

    const Item special = Item::_display(5, options, true, ZVRecorder::ScreenRecordingOutputOptions::segmented());
    EXPECT_TRUE(payload<DisplaySchemaItem>(special).topWindowInfo);
}

TEST(SchemaItem, AWindowCropNeverCapturesSound) {
    const Item crop = Item::windowBasedCrop(7, {.showsCursor = false, .keyboardEvents = true}, "crop.mov");
    const auto& window = payload<WindowBasedCropSchemaItem>(crop);
    EXPECT_EQ(window.windowID, 7U);
    EXPECT_EQ(std::tuple(window.captureAudio, window.showsCursor, window.mouseEvents, window.keyboardEvents),
              std::tuple(false, false, false, true));
}

TEST(SchemaItem, SystemAudioSplitsItsExclusions) {
    using Exclude = ZVRecorder::SystemAudioExcludeOptions;
    const Item some = Item::systemAudio({Exclude::processID(9), Exclude::currentProcess(), Exclude::processID(3)});
    EXPECT_EQ(payload<SystemAudioSchemaItem>(some).excludedApplicationIDs, (std::vector<std::int32_t>{3, 9}));
    EXPECT_TRUE(payload<SystemAudioSchemaItem>(some).excludeCurrentProcess);
    EXPECT_FALSE(payload<SystemAudioSchemaItem>(some).includedApplicationIDs);

    const Item all = Item::systemAudio();
    EXPECT_EQ(payload<SystemAudioSchemaItem>(all).excludedApplicationIDs, std::vector<std::int32_t>());
    EXPECT_FALSE(payload<SystemAudioSchemaItem>(all).excludeCurrentProcess);

    const Item one = Item::applicationAudio(4);
    EXPECT_EQ(payload<SystemAudioSchemaItem>(one).includedApplicationIDs, std::vector<std::int32_t>{4});
    EXPECT_FALSE(payload<SystemAudioSchemaItem>(one).excludedApplicationIDs);
    EXPECT_FALSE(payload<SystemAudioSchemaItem>(one).excludeCurrentProcess);
}

TEST(SchemaItem, TheSameSourceTwiceHasTwoIDs) {
    const Item first = Item::display(5);
    const Item second = Item::display(5);
    EXPECT_EQ(payload<DisplaySchemaItem>(first).id.size(), 5U);
    EXPECT_NE(payload<DisplaySchemaItem>(first).id, payload<DisplaySchemaItem>(second).id);
}

TEST(SchemaItem, NamesItsFileAfterItsSource) {
    const Item webcam = Item::webcam("mic", "cam");
    const Item microphone = Item::microphone("mic");
    const Item device = Item::appleDeviceStaticOrientation("phone");
    EXPECT_EQ(fallbackFilename(payload<WebcamSchemaItem>(webcam)),
              "webcam-" + payload<WebcamSchemaItem>(webcam).id + ".mov");
    EXPECT_EQ(fallbackFilename(payload<MicrophoneFileSchemaItem>(microphone)),
              "microphone-" + payload<MicrophoneFileSchemaItem>(microphone).id + ".m4a");
    EXPECT_EQ(fallbackFilename(payload<DisplaySchemaItem>(Item::display(4'000'000'000U))), "display-4000000000.mov");
    EXPECT_EQ(fallbackFilename(payload<WindowBasedCropSchemaItem>(Item::windowBasedCrop(7))), "windowcrop-7.mov");
    EXPECT_EQ(fallbackFilename(payload<AppleDeviceStaticOrientationItem>(device)), "appledevice-phone.mov");
}

TEST(SchemaItem, NamesTheSoundOfOneApplicationAfterItAndAMixAtRandom) {
    EXPECT_EQ(fallbackFilename(payload<SystemAudioSchemaItem>(Item::applicationAudio(42))), "appaudio-42.m4a");
    for (const Item& mix : {Item::systemAudio(std::vector<std::int32_t>{1, 2}), Item::systemAudio()}) {
        const auto& audio = payload<SystemAudioSchemaItem>(mix);
        const std::string name = fallbackFilename(audio);
        EXPECT_TRUE(name.starts_with("systemaudio-") && name.ends_with(".m4a")) << name;
        EXPECT_EQ(name.find(audio.id), std::string::npos) << "the name is made anew";
        EXPECT_NE(name, fallbackFilename(audio));
    }
}

TEST(SchemaItem, DescribesItselfForLogs) {
    const ZVSchema schema{"/tmp/x", {Item::display(5), Item::applicationAudio(4), Item::webcam("mic", "cam")}};
    EXPECT_EQ(schema.debugDescription(),
              "outputDirectory: /tmp/x, items: [display(5), systemAudio(4), webcam(cam, mic)]");
    EXPECT_EQ(ZVSchema().debugDescription(), "outputDirectory: none, items: []");
}

TEST(OutputDescription, TakesTheHostsNameElseTheFallback) {
    EXPECT_EQ(filename(ZVSingleFileOutput{"screen.webm"}, "display-5.mov"), "/bundle/screen.webm");
    EXPECT_EQ(filename(ZVSingleFileOutput{}, "display-5.mov"), "/bundle/display-5.mov");
    EXPECT_EQ(filename(ZVSingleFileOutput{"/etc/screen.mov"}, "display-5.mov"), "/bundle/etc/screen.mov");
}

TEST(OutputDescription, RefusesANameThatLeadsOutOfTheBundleOrIsThatOfItsManifest) {
    for (const char* name : {"zorvane.json", "/zorvane.json", ".//zorvane.json"}) {
        EXPECT_THROW(filename(ZVSingleFileOutput{name}, "display-5.mov"), ZVError) << name;
    }
    for (const char* name : {"..", "../screen.mov", "/../screen.mov", "a/../../screen.mov"}) {
        EXPECT_THROW(filename(ZVSingleFileOutput{name}, "display-5.mov"), ZVError) << name;
        EXPECT_THROW(outputDescription(ZVSegmentedOutput{.filenamePrefix = name}, "/bundle", "x.mov"), ZVError) << name;
    }
    EXPECT_EQ(filename(ZVSingleFileOutput{"..screen..mov"}, "display-5.mov"), "/bundle/..screen..mov");
}

TEST(OutputDescription, SegmentsTakeThePrefixElseTheFallbackWithoutItsExtension) {
    const auto describe = [](const ZVSegmentedOutput& output) {
        return std::get<OutputDescription::MultipleStreams>(outputDescription(output, "/bundle", "display-5.mov").form);
    };
    std::filesystem::path heard;
    const auto named = describe({.filenamePrefix = "a.b", .segmentCallback = [&](const auto& url) { heard = url; }});
    EXPECT_EQ(named.directoryURL, "/bundle");
    EXPECT_EQ(named.filenamePrefix, "a.b");
    named.segmentCallback("/bundle/a.b-1.m4s");
    EXPECT_EQ(heard, "/bundle/a.b-1.m4s");

    const auto unnamed = describe({});
    EXPECT_EQ(unnamed.filenamePrefix, "display-5");
    unnamed.segmentCallback("does nothing");
}

TEST(OutputDescription, SideFilesFollowTheNameOfTheMedia) {
    using Output = ZVRecorder::ScreenRecordingOutputOptions;
    const std::vector<std::pair<Output, std::string>> rows{
        {Output::singleFile("screen.mov"), "/bundle/screen.input-events.json"},
        {Output::singleFile("take.1.mov"), "/bundle/take.1.input-events.json"},
        {Output::singleFile("screen"), "/bundle/screen.input-events.json"},
        {Output::singleFile(), "/bundle/display-5.input-events.json"},
        {Output::segmented({.filenamePrefix = "a.b"}), "/bundle/a.b.input-events.json"},
        {Output::segmented(), "/bundle/display-5.input-events.json"},
    };
    for (const auto& [output, expected] : rows) {
        EXPECT_EQ(inputEventsURL(output, "/bundle", "display-5.mov", inputEventsSuffix), expected);
    }
    EXPECT_EQ(inputEventsURL(Output::singleFile(), "/bundle", "display-5.mov", topWindowsSuffix),
              "/bundle/display-5.top-windows.json");
}

TEST(RecorderContext, GivesEachNameInTheBundleToOneSource) {
    const TemporaryDirectory bundle;
    const LogCapture log;
    const auto interval = std::make_shared<VolatileRecordingInterval>();
    const RecorderContext context{bundle.path(), StableRecordingInterval(interval), log.logger<ZVRecorder>(),
                                  [](const AbortSignal&) {}, nullptr};
    const RecorderContext sameRecording = context;
    context.claimOutput(ZVSingleFileOutput{"talk.mov"}, "");
    context.claimOutput(ZVSegmentedOutput{.filenamePrefix = "talk"}, "");
    context.claimSideFile(ZVScreenRecordingOutputOptions::singleFile("talk.mov"), "", inputEventsSuffix);
    EXPECT_THROW(sameRecording.claimOutput(ZVSingleFileOutput{"./talk.mov"}, ""), ZVError);
    EXPECT_THROW(sameRecording.claimOutput(ZVSegmentedOutput{.filenamePrefix = "talk"}, ""), ZVError);
    EXPECT_THROW(sameRecording.claimOutput(ZVSingleFileOutput{"talk.input-events.json"}, ""), ZVError);
    EXPECT_THROW(sameRecording.claimOutput(ZVSegmentedOutput{.filenamePrefix = "missing/talk"}, ""), ZVError);
    sameRecording.claimOutput(ZVSingleFileOutput{"other.mov"}, "");
}

}  // namespace
}  // namespace zorvane
