#include "Zorvane/Internal/Recorders/ScreenRecorderExpansion.hpp"

#include <memory>
#include <utility>

#include "Zorvane/Internal/Recorders/ScreenExclusion.hpp"
#include "Zorvane/Internal/Recorders/ScreenRecorder.hpp"
#include "Zorvane/Internal/Recorders/TopWindowInfoRecorder.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

/// Refuses the side files that no recorder writes yet, rather than leave them out without a word.
template <class Item>
void requireNoInputEvents(const Item& item) {
    if (item.mouseEvents || item.keyboardEvents) {
        throw ZVError::invalidConfiguration(
            "Mouse and keyboard events can't be recorded in this version. Turn mouseEvents and keyboardEvents off.");
    }
}

template <class Item>
Recorders makeScreenRecorder(const Item& item, ResolvedContentFilter content, RecorderContext context) {
    ScreenRecorderParameters parameters{
        .id = item.id,
        .outputDescription = outputDescription(item.outputOptions.form(), context.bundleURL, fallbackFilename(item)),
        .content = std::move(content),
        .captureAudio = item.captureAudio,
        .showsCursor = item.showsCursor,
        .mode = recordModeFor(item.colorSpace),
        .recordingInterval = context.recordingInterval,
        .logger = std::move(context.logger),
        .onAbort = std::move(context.onAbort),
        .onNotice = std::move(context.onNotice),
    };
    Recorders recorders;
    recorders.push_back(std::make_shared<ScreenRecorder>(std::move(parameters)));
    return recorders;
}

std::shared_ptr<Recorder> makeTopWindowRecorder(const DisplaySchemaItem& item, const ResolvedContentFilter& content,
                                                const RecorderContext& context) {
    const auto url = inputEventsURL(item.outputOptions, context.bundleURL, fallbackFilename(item), topWindowsSuffix);
    return std::make_shared<TopWindowInfoRecorder>(item.id, url, content.display.displayID, content.globalCrop(),
                                                   context);
}

}  // namespace

Task<Recorders> createRecorders(DisplaySchemaItem item, RecorderContext context) {
    requireNoInputEvents(item);
    DisplayFilterOptions options = displayFilterOptions(item.excludingOptions);
    ResolvedContentFilter content = co_await createDisplayFilter(item.displayID, std::move(options), context.logger);
    Recorders recorders = makeScreenRecorder(item, content, context);
    if (item.topWindowInfo) {
        recorders.push_back(makeTopWindowRecorder(item, content, context));
    }
    co_return recorders;
}

Task<Recorders> createRecorders(WindowBasedCropSchemaItem item, RecorderContext context) {
    requireNoInputEvents(item);
    ResolvedContentFilter content = co_await createWindowBasedCropFilter(item.windowID, context.logger);
    co_return makeScreenRecorder(item, std::move(content), std::move(context));
}

}  // namespace zorvane
