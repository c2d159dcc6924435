#include "Zorvane/Internal/Recorders/InputRecorder/InputRecorder.hpp"

#include <utility>

#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/Recorders/InputRecorder/CGEventStream.hpp"
#include "Zorvane/Internal/Recorders/InputRecorder/CGEventTypes.hpp"
#include "Zorvane/Internal/Recorders/InputRecorder/InputEventProcessor.hpp"

namespace zorvane {
namespace {

CGEventMask eventTypes(InputRecorder::CaptureMode mode) {
    switch (mode) {
        case InputRecorder::CaptureMode::mouseEvents:
            return mouseEventTypes;
        case InputRecorder::CaptureMode::keyboardEvents:
            return keyboardEventTypes;
        case InputRecorder::CaptureMode::mouseAndKeyboardEvents:
            return mouseEventTypes | keyboardEventTypes;
    }
    return 0;
}

Task<> monitorEvents(std::shared_ptr<CGEventStream> events, std::shared_ptr<InputEventProcessor> processor,
                     Logger logger, AbortHandler onAbort) {
    try {
        while (auto event = co_await events->next()) {
            co_await processor->process(std::move(*event));
        }
        logger.debug("Event tap stopped.");
    } catch (const ZVCancelled&) {
        logger.debug("Event tap stopped.");
    } catch (...) {
        const std::exception_ptr error = std::current_exception();
        logger.error("Event monitor stopped with error, aborting.", errorMetadata(error));
        onAbort(AbortSignal::interrupted(error));
    }
}

}  // namespace

InputRecorder::InputRecorder(InputRecorderParameters parameters)
    : id_(std::move(parameters.id)),
      logger_(parameters.logger.withFile(id_)),
      captureMode_(parameters.capture),
      filename_(parameters.url.filename()),
      onAbort_(std::move(parameters.onAbort)),
      processor_(std::make_shared<InputEventProcessor>(parameters.url, parameters.globalCropTopLeft,
                                                       std::move(parameters.cursorTimeline),
                                                       std::move(parameters.recordingInterval), logger_)) {}

InputRecorder::~InputRecorder() {
    eventMonitor_.cancelAndJoin();
}

std::shared_ptr<CGEventStream> InputRecorder::makeEventStream() const {
    return captureMode_ == CaptureMode::mouseEvents ? CGEventStream::combinedMonitorForEvents(mouseEventsTypeMask)
                                                    : CGEventStream::eventTapForEvents(eventTypes(captureMode_));
}

Task<> InputRecorder::prepare() {
    logger_.trace("Preparing.");
    auto events = makeEventStream();
    events_ = events;
    eventMonitor_ = spawn(monitorEvents(std::move(events), processor_, logger_, onAbort_));
    co_return;
}

Task<> InputRecorder::cancel() {
    if (eventMonitor_) {
        eventMonitor_.cancel();
        co_await eventMonitor_.finished();
    }
}

Task<std::vector<ZVBundleInfo::FileAsset>> InputRecorder::finish() {
    logger_.trace("Finishing.");
    processor_->expectEnd();
    if (const auto events = events_.lock()) {
        events->finish();
    }
    if (eventMonitor_) {
        co_await eventMonitor_.finished();
    }
    processor_->finish();
    logger_.debug("Finished.");
    std::vector<ZVBundleInfo::FileAsset> files;
    files.push_back({.type = ZVBundleInfo::FileAssetType::mouse, .filename = filename_});
    co_return files;
}

}  // namespace zorvane
