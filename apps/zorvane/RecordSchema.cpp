#include "RecordSchema.hpp"

#include <set>
#include <utility>

#include "DeviceChoice.hpp"
#include "DisplayChoice.hpp"

namespace zorvane::cli {
namespace {

using Item = ZVRecorder::SchemaItem;

template <class Output>
Output outputOf(const RecordOptions& options, const SegmentHandler& onSegment) {
    return options.segmented ? Output::segmented({std::nullopt, onSegment}) : Output::singleFile();
}

Item windowItem(const RecordOptions& options, const SegmentHandler& onSegment) {
    ZVRecorder::WindowBasedCropOptions crop;
    crop.colorSpace = options.colorSpace;
    crop.showsCursor = options.showsCursor;
    crop.mouseEvents = options.mouse;
    crop.keyboardEvents = options.keyboard;
    return Item::windowBasedCrop(*options.windowID, crop,
                                 outputOf<ZVRecorder::ScreenRecordingOutputOptions>(options, onSegment));
}

Item displayItem(const RecordOptions& options, const SegmentHandler& onSegment, std::stop_token stopToken) {
    ZVRecorder::DisplayOptions display;
    display.excluding = options.excluding;
    display.colorSpace = options.colorSpace;
    display.showsCursor = options.showsCursor;
    display.includeAudio = options.displayAudio;
    display.mouseEvents = options.mouse;
    display.keyboardEvents = options.keyboard;
    return Item::_display(chooseDisplay(options.display.value_or(DisplayName{}), std::move(stopToken)), display,
                          options.topWindow, outputOf<ZVRecorder::ScreenRecordingOutputOptions>(options, onSegment));
}

std::set<ZVRecorder::SystemAudioExcludeOptions> excludedProcesses(const RecordOptions& options) {
    std::set<ZVRecorder::SystemAudioExcludeOptions> excluded;
    for (const std::int32_t process : options.excludedProcesses) {
        excluded.insert(ZVRecorder::SystemAudioExcludeOptions::processID(process));
    }
    return excluded;
}

/// The movies of cameras, which take the first microphone's sound into them, and the files of all microphones else.
void addCamerasAndMicrophones(const RecordOptions& options, const SegmentHandler& onSegment,
                              const std::stop_token& stopToken, std::vector<Item>& items) {
    std::vector<std::string> microphones;
    for (const std::string& microphone : options.microphones) {
        microphones.push_back(chooseMicrophone(microphone, stopToken));
    }
    auto alone = microphones.begin();
    if (!options.cameras.empty()) {
        const std::string voice = alone == microphones.end() ? chooseMicrophone("default", stopToken) : *alone++;
        for (const std::string& camera : options.cameras) {
            items.push_back(Item::webcam(voice, chooseCamera(camera, stopToken),
                                         outputOf<ZVRecorder::WebcamOutputOptions>(options, onSegment)));
        }
    }
    for (; alone != microphones.end(); ++alone) {
        items.push_back(Item::microphone(*alone, outputOf<ZVRecorder::AudioOutputOptions>(options, onSegment)));
    }
}

}  // namespace

std::vector<Item> schemaItems(const RecordOptions& options, const SegmentHandler& onSegment,
                              std::stop_token stopToken) {
    const auto output = outputOf<ZVRecorder::AudioOutputOptions>(options, onSegment);
    std::vector<Item> items;
    if (options.windowID) {
        items.push_back(windowItem(options, onSegment));
    } else if (options.display || !namesOtherSource(options)) {
        items.push_back(displayItem(options, onSegment, stopToken));
    }
    addCamerasAndMicrophones(options, onSegment, stopToken, items);
    for (const std::string& device : options.devices) {
        items.push_back(Item::appleDeviceStaticOrientation(
            chooseDevice(device, stopToken), outputOf<ZVRecorder::DeviceOutputOptions>(options, onSegment)));
    }
    if (options.systemAudio) {
        items.push_back(Item::systemAudio(excludedProcesses(options), output));
    }
    for (const std::int32_t application : options.applications) {
        items.push_back(Item::applicationAudio(application, output));
    }
    return items;
}

}  // namespace zorvane::cli
