#include "RecordSchema.hpp"

#include <set>
#include <utility>

#include "DisplayChoice.hpp"
#include "MicrophoneChoice.hpp"

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

}  // namespace

std::vector<Item> schemaItems(const RecordOptions& options, const SegmentHandler& onSegment,
                              std::stop_token stopToken) {
    const auto output = outputOf<ZVRecorder::AudioOutputOptions>(options, onSegment);
    std::vector<Item> items;
    if (options.windowID) {
        items.push_back(windowItem(options, onSegment));
    } else if (options.display || !namesSound(options)) {
        items.push_back(displayItem(options, onSegment, stopToken));
    }
    for (const std::string& microphone : options.microphones) {
        items.push_back(Item::microphone(chooseMicrophone(microphone, stopToken), output));
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
