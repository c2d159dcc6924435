#include "Zorvane/Internal/Recorders/TopWindowInfoRecorder.hpp"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/ZVWindowPresenceJSON.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr std::size_t retimerCapacity = 1;  // what is in front at the start
constexpr std::int32_t timescale = 1'000'000'000;

CGRect requireArea(const CGRect& crop) {
    if (!CGRectIntersectsRect(crop, crop)) {
        throw ZVError::invalidConfiguration(
            "The recorded area " + debugDescription(crop) + " is empty, so that no window can be placed in it.",
            "Can't record the window in front because the recorded area is empty.");
    }
    return crop;
}

ZVTime zvTime(CMTime cmTime) {
    const double seconds = cmTime.seconds();
    return {seconds, static_cast<std::int64_t>(seconds * timescale), timescale};
}

/// Place and size as fractions of `crop`.
ZVWindowInfo windowInfo(const TopWindowTracker::WindowSnapshot& snapshot, const CGRect& crop, ZVTime time) {
    const CGRect& frame = snapshot.topLeftFrame;
    return {.time = time,
            .windowID = snapshot.windowID,
            .windowTitle = snapshot.windowTitle,
            .applicationID = snapshot.applicationID,
            .applicationName = snapshot.applicationName,
            .x = (frame.origin.x - crop.origin.x) / crop.size.width,
            .y = (frame.origin.y - crop.origin.y) / crop.size.height,
            .width = frame.size.width / crop.size.width,
            .height = frame.size.height / crop.size.height};
}

}  // namespace

TopWindowInfoRecorder::TopWindowInfoRecorder(std::string id, const std::filesystem::path& url,
                                             CGDirectDisplayID displayID, const CGRect& globalCropTopLeft,
                                             const RecorderContext& context)
    : id_(std::move(id)),
      logger_(context.logger.withFile(id_)),
      outputURL_(url),
      displayID_(displayID),
      crop_(requireArea(globalCropTopLeft)),
      writer_(outputURL_),
      onAbort_(context.onAbort),
      retimer_(context.recordingInterval, retimerCapacity, /*zeroBasedOutputTimes=*/true) {
    retimer_.setHandler([this](auto, const TopWindowTracker::Update& update, CMTime time) { process(update, time); });
}

TopWindowInfoRecorder::~TopWindowInfoRecorder() {
    eventMonitor_.cancelAndJoin();
}

Task<> TopWindowInfoRecorder::prepare() {
    logger_.trace("Preparing.");
    auto [began, beginning] = makeContinuation();
    eventMonitor_ = spawn(monitor(std::move(began)));
    co_await std::move(beginning);
}

Task<> TopWindowInfoRecorder::cancel() {
    co_await endMonitoring();
}

Task<std::vector<ZVBundleInfo::FileAsset>> TopWindowInfoRecorder::finish() {
    logger_.trace("Finishing.");
    co_await endMonitoring();
    retimer_.finish();
    writer_.close();
    logger_.debug("Finished.");
    std::vector<ZVBundleInfo::FileAsset> assets;
    assets.push_back({.type = ZVBundleInfo::FileAssetType::topWindow, .filename = outputURL_.filename().string()});
    co_return assets;
}

Task<> TopWindowInfoRecorder::endMonitoring() {
    if (eventMonitor_) {
        eventMonitor_.cancel();
        co_await eventMonitor_.finished();
    }
}

/// `began` is resumed by the first update, or by the end.
Task<> TopWindowInfoRecorder::monitor(Continuation<> began) {
    std::exception_ptr error;
    try {
        const auto tracker = TopWindowTracker::make(displayID_, ZVWindow::FilterOptions::default_);
        auto updates = tracker->updates();
        while (const auto update = co_await updates.next()) {
            append(*update);
            began.resume();
        }
    } catch (...) {
        error = std::current_exception();
    }
    noteEnd(error);
    began.resume();
}

void TopWindowInfoRecorder::noteEnd(const std::exception_ptr& error) {
    if (!error) {
        logger_.error("Top window tracker stopped before recording stopped.");
        return;
    }
    try {
        std::rethrow_exception(error);
    } catch (const ZVCancelled&) {
        logger_.debug("Top window tracker stopped.");
    } catch (...) {
        logger_.error("Top window tracker stopped with error, aborting.", errorMetadata(error));
        onAbort_(AbortSignal::interrupted(error));
    }
}

void TopWindowInfoRecorder::append(const TopWindowTracker::Update& update) {
    retimer_.append(update, CMTime::fromSeconds(update.timestamp, timescale));
}

void TopWindowInfoRecorder::process(const TopWindowTracker::Update& update, CMTime cmTime) {
    const ZVTime time = zvTime(cmTime);
    if (!update.windowSnapshot) {
        writer_.write(ZVWindowPresence(ZVWindowAbsence{time}));
        return;
    }
    if (!CGRectIntersectsRect(update.windowSnapshot->topLeftFrame, crop_)) {
        logger_.debug("Switching to top window outside crop region, skipping");
        return;
    }
    writer_.write(ZVWindowPresence(windowInfo(*update.windowSnapshot, crop_, time)));
}

}  // namespace zorvane
