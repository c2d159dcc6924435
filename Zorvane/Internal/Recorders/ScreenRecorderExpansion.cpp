#include "Zorvane/Internal/Recorders/ScreenRecorderExpansion.hpp"

#include <memory>
#include <optional>
#include <utility>

#include "Zorvane/Internal/Recorders/CursorRecorder/CursorRecorder.hpp"
#include "Zorvane/Internal/Recorders/InputRecorder/InputRecorder.hpp"
#include "Zorvane/Internal/Recorders/ScreenExclusion.hpp"
#include "Zorvane/Internal/Recorders/ScreenRecorder.hpp"
#include "Zorvane/Internal/Recorders/TopWindowInfoRecorder.hpp"

namespace zorvane {
namespace {

template <class Item>
OutputDescription claimOutput(const Item& item, const RecorderContext& context) {
    return context.claimOutput(item.outputOptions.form(), fallbackFilename(item));
}

template <class Item>
std::shared_ptr<Recorder> makeScreenRecorder(const Item& item, OutputDescription output,
                                             const ResolvedContentFilter& content, const RecorderContext& context) {
    return std::make_shared<ScreenRecorder>(ScreenRecorderParameters{
        .id = item.id,
        .outputDescription = std::move(output),
        .content = content,
        .captureAudio = item.captureAudio,
        .showsCursor = item.showsCursor,
        .mode = recordModeFor(item.colorSpace),
        .recordingInterval = context.recordingInterval,
        .logger = context.logger,
        .onAbort = context.onAbort,
        .onNotice = context.onNotice,
    });
}

template <class Item>
std::optional<InputRecorder::CaptureMode> captureModeOf(const Item& item) {
    using Mode = InputRecorder::CaptureMode;
    if (item.mouseEvents) {
        return item.keyboardEvents ? Mode::mouseAndKeyboardEvents : Mode::mouseEvents;
    }
    return item.keyboardEvents ? std::optional(Mode::keyboardEvents) : std::nullopt;
}

/// A recorder of input and the one of the cursor that it reads, if the item asks for them.
template <class Item>
void addInputRecorders(Recorders& recorders, const Item& item, const ResolvedContentFilter& content,
                       const RecorderContext& context) {
    const auto captureMode = captureModeOf(item);
    if (!captureMode) {
        return;
    }
    const auto cursorRecorder = std::make_shared<CursorRecorder>(item.id, context.logger);
    recorders.push_back(cursorRecorder);
    recorders.push_back(std::make_shared<InputRecorder>(InputRecorderParameters{
        .id = item.id,
        .capture = *captureMode,
        .url = context.claimSideFile(item.outputOptions, fallbackFilename(item), inputEventsSuffix),
        .globalCropTopLeft = content.globalCrop(),
        .cursorTimeline = cursorRecorder->timeline(),
        .recordingInterval = context.recordingInterval,
        .logger = context.logger,
        .onAbort = context.onAbort,
    }));
}

std::shared_ptr<Recorder> makeTopWindowRecorder(const DisplaySchemaItem& item, const ResolvedContentFilter& content,
                                                const RecorderContext& context) {
    const auto url = context.claimSideFile(item.outputOptions, fallbackFilename(item), topWindowsSuffix);
    return std::make_shared<TopWindowInfoRecorder>(item.id, url, content.display.displayID, content.globalCrop(),
                                                   context);
}

}  // namespace

Task<Recorders> createRecorders(DisplaySchemaItem item, RecorderContext context) {
    OutputDescription output = claimOutput(item, context);
    DisplayFilterOptions options = displayFilterOptions(item.excludingOptions);
    ResolvedContentFilter content = co_await createDisplayFilter(item.displayID, std::move(options), context.logger);
    Recorders recorders;
    recorders.push_back(makeScreenRecorder(item, std::move(output), content, context));
    addInputRecorders(recorders, item, content, context);
    if (item.topWindowInfo) {
        recorders.push_back(makeTopWindowRecorder(item, content, context));
    }
    co_return recorders;
}

Task<Recorders> createRecorders(WindowBasedCropSchemaItem item, RecorderContext context) {
    OutputDescription output = claimOutput(item, context);
    ResolvedContentFilter content = co_await createWindowBasedCropFilter(item.windowID, context.logger);
    Recorders recorders;
    recorders.push_back(makeScreenRecorder(item, std::move(output), content, context));
    addInputRecorders(recorders, item, content, context);
    co_return recorders;
}

}  // namespace zorvane
