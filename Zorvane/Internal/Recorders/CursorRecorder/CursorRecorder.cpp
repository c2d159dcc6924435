#include "Zorvane/Internal/Recorders/CursorRecorder/CursorRecorder.hpp"

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "Zorvane/Internal/CGInterop/Display.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/Recorders/ThrottledWarnings.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr double logRateLimit = 10.0;  // seconds between two warnings of one kind

std::string text(const CGPoint& point) {
    return fmt::format("({}, {})", point.x, point.y);
}

/// Apart from the refresh, which must not wait for it.
void beginSwitch(std::shared_ptr<CVDisplayLink> link, CGDirectDisplayID from, CGDirectDisplayID to, Logger logger) {
    Executor::pool()->post([link = std::move(link), from, to, logger = std::move(logger)] {
        const PoolBlockingScope blocking;
        const auto metadata = [&] {
            return LogMetadata{{"fromDisplay", fmt::format("{}", from)}, {"toDisplay", fmt::format("{}", to)}};
        };
        if (link->setCurrentCGDisplay(to) == kCVReturnSuccess) {
            logger.debug("Switched link to display containing mouse location.", metadata);
        } else {
            logger.warning("Failed to switch link to display containing mouse location.", metadata);
        }
    });
}

}  // namespace

/// What happens at each refresh. It never owns the link, which owns it.
class CursorRecorder::Sampler {
  public:
    Sampler(std::shared_ptr<CursorTimeline> timeline, std::weak_ptr<CVDisplayLink> link, const Logger& logger)
        : timeline_(std::move(timeline)), link_(std::move(link)), logger_(logger), warnings_(logger, logRateLimit) {}

    /// One call at a time.
    void refresh() {
        const CMTime now = hostTimeClockTime();
        const std::optional<CGEvent> pointer = events_->create();
        if (!pointer) {
            warnings_.warn("mouseLocationNil", now, "Skipping frame; failed to retreive mouse location.");
            return;
        }
        const std::optional<NSCursor> cursor = cursors_->currentSystemCursor();
        if (!cursor) {
            warnings_.warn("cursorNil", now, "Skipping frame; failed to retreive system cursor.");
            return;
        }
        timeline_->queue().syncBarrier([&] { timeline_->capture(*cursor, now, *pointer); });
        followPointer(pointer->location, now);
    }

    /// Beside a refresh, if need be.
    void lookOnceMore() const {
        const CMTime now = hostTimeClockTime();
        const std::optional<CGEvent> pointer = events_->create();
        const std::optional<NSCursor> cursor = cursors_->currentSystemCursor();
        if (pointer && cursor) {
            timeline_->queue().syncBarrier([&] { timeline_->capture(*cursor, now, *pointer); });
        }
    }

  private:
    void followPointer(const CGPoint& location, CMTime now) {
        std::vector<CGDirectDisplayID> displays;
        try {
            displays = CGInterop::Display::getActiveDisplays(location);
        } catch (...) {
            warnings_.warn(
                "activeDisplaysError", now, "Error while getting active display containing mouse location.",
                [&, error = std::current_exception()] {
                    return LogMetadata{{"error", debugDescription(error)}, {"mouseLocation", text(location)}};
                });
            return;
        }
        if (displays.empty()) {
            warnings_.warn("activeDisplaysEmpty", now, "No active display found containing the mouse location.", [&] {
                return LogMetadata{{"mouseLocation", text(location)}};
            });
            return;
        }
        const auto link = link_.lock();
        if (link && displays.front() != link->currentCGDisplay()) {
            beginSwitch(link, link->currentCGDisplay(), displays.front(), logger_);
        }
    }

    const std::shared_ptr<CGEvents> events_ = Platform::current()->events;
    const std::shared_ptr<NSCursors> cursors_ = Platform::current()->cursors;
    const std::shared_ptr<CursorTimeline> timeline_;
    const std::weak_ptr<CVDisplayLink> link_;
    const Logger logger_;
    ThrottledWarnings warnings_;
};

CursorRecorder::CursorRecorder(std::string id, const Logger& logger)
    : id_(std::move(id)),
      displayId_(CGMainDisplayID(*Platform::current()->displays)),
      logger_(logger.withFile(id_, {{"displayId", fmt::format("{}", displayId_)}})),
      displayLink_(makeDisplayLink()),
      sampler_(std::make_shared<Sampler>(timeline_, displayLink_, logger_)) {}

CursorRecorder::~CursorRecorder() {
    const PoolBlockingScope blocking;
    displayLink_->stop();
}

std::shared_ptr<CVDisplayLink> CursorRecorder::makeDisplayLink() const {
    const PoolBlockingScope blocking;
    logger_.trace("Initializing.");
    logger_.trace("Creating display link.");
    CVDisplayLinks::Created created = Platform::current()->displayLinks->createWithActiveCGDisplays();
    if (created.code != kCVReturnSuccess || !created.link) {
        throw ZVError::internalError(
            fmt::format("Display link creation failed. (Error: {})",
                        created.code != kCVReturnSuccess ? fmt::format("{}", created.code) : "Unexpected nil value"));
    }
    logger_.debug("Created display link.");
    return std::move(created.link);
}

void CursorRecorder::require(CVReturn code, const char* failure, const std::string& details) const {
    if (code != kCVReturnSuccess) {
        logger_.error(failure, [&] { return LogMetadata{{"errorCode", fmt::format("{}", code)}}; });
        throw ZVError::internalError(fmt::format("{} ({}Error: {})", failure, details, code));
    }
}

Task<> CursorRecorder::prepare() {
    const PoolBlockingScope blocking;
    logger_.trace("Preparing.");
    const std::vector<Cursor> systemCursors = Cursor::allSystemCursors();
    timeline_->queue().syncBarrier([&] { timeline_->preload(systemCursors); });
    require(displayLink_->setOutputHandler([sampler = sampler_] {
        sampler->refresh();
        return kCVReturnSuccess;
    }),
            "Failed to set display link output handler.", "");
    require(displayLink_->setCurrentCGDisplay(displayId_), "Failed to set display link display.",
            fmt::format("Display: {} ", displayId_));
    require(displayLink_->start(), "Failed to start display link.", "");
    co_return;
}

Task<> CursorRecorder::cancel() {
    stop();
    co_return;
}

Task<std::vector<ZVBundleInfo::FileAsset>> CursorRecorder::finish() {
    logger_.trace("Finishing.");
    stop();
    const PoolBlockingScope blocking;
    sampler_->lookOnceMore();
    logger_.debug("Finished.");
    co_return std::vector<ZVBundleInfo::FileAsset>();
}

void CursorRecorder::stop() const {
    const PoolBlockingScope blocking;
    if (const CVReturn code = displayLink_->stop(); code != kCVReturnSuccess) {
        logger_.warning("Failed to stop display link.", [&] {
            return LogMetadata{{"errorCode", fmt::format("{}", code)}};
        });
    }
}

}  // namespace zorvane
