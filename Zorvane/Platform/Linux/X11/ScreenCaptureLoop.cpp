#include "Zorvane/Platform/Linux/X11/ScreenCaptureLoop.hpp"

#include <fmt/format.h>
#include <poll.h>
#include <xcb/xcb.h>

#include <algorithm>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/ComposedScreen.hpp"
#include "Zorvane/Platform/Linux/X11/WholeScreen.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XDisplayList.hpp"

namespace zorvane {
namespace {

using std::chrono::nanoseconds;

/// A pause this long counts as a still screen.
constexpr nanoseconds stillAfter = std::chrono::milliseconds(100);

nanoseconds monotonicTime() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

NSError streamError(SCStreamErrorCode code, std::string text) {
    return {SCStreamErrorDomain, static_cast<std::int64_t>(code), {std::move(text)}};
}

nanoseconds intervalOf(const SCStreamConfiguration& configuration) {
    const double seconds = configuration.minimumFrameInterval.seconds();
    return seconds > 0 ? nanoseconds(static_cast<std::int64_t>(seconds * 1e9)) : nanoseconds::zero();
}

std::optional<CGRect> boundsOf(CGDirectDisplayID displayID, const std::vector<XDisplay>& displays) {
    const auto display = std::find_if(displays.begin(), displays.end(),
                                      [&](const XDisplay& each) { return each.displayID == displayID; });
    return display == displays.end() ? std::nullopt : std::optional(display->properties.bounds);
}

CGRect requireDisplay(const XConnection& connection, const SCContentFilter& filter) {
    if (const auto bounds = boundsOf(filter.display.displayID, readDisplays(connection))) {
        return *bounds;
    }
    throw streamError(SCStreamErrorCode::noCaptureSource, "The display to be recorded isn't connected any more.");
}

ScreenArea requireArea(const CGRect& displayBounds, const SCStreamConfiguration& configuration) {
    if (const auto area = ScreenArea::of(displayBounds, configuration.sourceRect)) {
        return *area;
    }
    throw streamError(SCStreamErrorCode::failedToStart, "The area to be recorded lies outside of the display.");
}

std::unique_ptr<ScreenSource> makeSource(XConnection& connection, const SCContentFilter& filter,
                                         const ScreenArea& area) {
    if (filter.showsEverything()) {
        return std::make_unique<WholeScreen>(connection, area);
    }
    return std::make_unique<ComposedScreen>(connection, filter, area);
}

}  // namespace

ScreenCaptureLoop::ScreenCaptureLoop(XConnection& connection, const SCContentFilter& filter,
                                     const SCStreamConfiguration& configuration)
    : connection_(connection),
      watch_(connection, configuration.showsCursor),
      displayID_(filter.display.displayID),
      displayBounds_(requireDisplay(connection, filter)),
      area_(requireArea(displayBounds_, configuration)),
      source_(makeSource(connection, filter, area_)),
      reader_(connection, area_, source_->place(), configuration.queueDepth),
      pacer_(intervalOf(configuration), std::max(stillAfter, intervalOf(configuration))) {
    if (configuration.showsCursor) {
        cursor_.emplace(connection, area_);
    }
}

void ScreenCaptureLoop::run(Sink& sink) {
    pacer_.noteChange(monotonicTime());
    for (;;) {
        noteChanges();
        const auto now = monotonicTime();
        const auto next = pacer_.decide(now);
        switch (next.step) {
            case FramePacer::Step::read:
                read(sink);
                break;
            case FramePacer::Step::tellIdle:
                pacer_.noteIdle();
                sink.screenFellStill(now);
                break;
            case FramePacer::Step::listen:
                wait(next.deadline, true);
                break;
            case FramePacer::Step::rest:
                wait(next.deadline, false);
                break;
        }
    }
}

// Round trips bring further events in, and an event that lies in XCB's queue doesn't wake a poll: so until none is
// left, or it's time to read in any case.
void ScreenCaptureLoop::noteChanges() {
    ScreenChanges changes;
    do {
        changes = watch_.take(*source_);
        const auto now = monotonicTime();
        if (changes.layout) {
            requireUnchangedDisplay();
        }
        if (changes.damage) {
            noteDamage(*changes.damage, now);
        }
        if (changes.pointer && !isOutdated_ && cursor_ && cursor_->hasChanged()) {
            isOutdated_ = true;
            pacer_.noteChange(now);
        }
    } while (changes.any() && pacer_.decide(monotonicTime()).step != FramePacer::Step::read);
    connection_.requireAlive();
}

// Damage outside of the area counts as a change too, though no picture comes of it: it must be acknowledged before the
// server tells of more, and that at the pace of pictures.
void ScreenCaptureLoop::noteDamage(const PixelRect& damage, Time now) {
    const PixelRect shown = area_.fromRoot(damage);
    if (!shown.isEmpty()) {
        reader_.noteChanged({shown.y, shown.maxY()});
        isOutdated_ = true;
    }
    pacer_.noteChange(now);
}

// What counts is that a display still shows the area: its number may change when a second panel with the same serial
// number is plugged in.
void ScreenCaptureLoop::requireUnchangedDisplay() const {
    const auto displays = readDisplays(connection_);
    if (std::any_of(displays.begin(), displays.end(),
                    [&](const XDisplay& each) { return each.properties.bounds == displayBounds_; })) {
        return;
    }
    if (boundsOf(displayID_, displays)) {
        throw streamError(SCStreamErrorCode::systemStoppedStream,
                          "The display that is being recorded changed its resolution or its place.");
    }
    throw streamError(SCStreamErrorCode::noCaptureSource, "The display that is being recorded was disconnected.");
}

void ScreenCaptureLoop::read(Sink& sink) {
    if (!isOutdated_) {
        source_->refresh();
        xcb_flush(connection_.get());
        pacer_.noteRead(monotonicTime(), false);
        return;
    }
    const CVPixelBufferRef picture = reader_.take();
    if (!picture) {
        pacer_.noteNoRoom(monotonicTime());
        return;
    }
    isOutdated_ = false;
    const Time time = fill(*picture);
    pacer_.noteRead(time, true);
    noteChanges();  // the answer came behind all that happened before the reading
    if (source_->showedTooMuch()) {
        isOutdated_ = true;
        pacer_.noteChange(monotonicTime());
        return;
    }
    sink.screenChanged(picture, time);
}

// The order matters: damage that comes after the refresh is told of again, so no change can slip between it and
// the reading. The server copies the rows in one go between request and reply, so the middle is never far off.
ScreenCaptureLoop::Time ScreenCaptureLoop::fill(CVPixelBuffer& picture) {
    const auto before = monotonicTime();
    source_->refresh();
    reader_.request(picture);
    if (cursor_) {
        cursor_->request();
    }
    if (!reader_.receive(picture)) {
        noteChanges();  // which tells why, if the display changed or the connection went
        throw streamError(SCStreamErrorCode::internalError, "The X server would not let the screen be read.");
    }
    const auto after = monotonicTime();
    if (cursor_) {
        reader_.noteDrawnOver(picture, cursor_->receiveAndDraw(picture));
    }
    return before + (after - before) / 2;
}

void ScreenCaptureLoop::wait(std::optional<Time> deadline, bool untilEvent) const {
    xcb_flush(connection_.get());
    pollfd socket{.fd = xcb_get_file_descriptor(connection_.get()),
                  .events = static_cast<short>(untilEvent ? POLLIN : 0),  // a hang-up wakes in any case
                  .revents = 0};
    timespec rest{};
    if (deadline) {
        const auto left = std::max(*deadline - monotonicTime(), nanoseconds::zero());
        rest.tv_sec = static_cast<time_t>(left.count() / 1'000'000'000);
        rest.tv_nsec = static_cast<long>(left.count() % 1'000'000'000);
    }
    ppoll(&socket, 1, deadline ? &rest : nullptr, nullptr);
}

}  // namespace zorvane
