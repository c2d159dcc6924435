// The work of a screen stream's thread.
#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"
#include "Zorvane/Platform/Linux/X11/CursorOverlay.hpp"
#include "Zorvane/Platform/Linux/X11/FramePacer.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenReader.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenSource.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenWatch.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {

class XConnection;

/// Waits for changes of what a filter shows of one display and reads them into pictures. Made and run on one thread, on
/// a connection of its own. When nothing changes the thread sleeps without a timer. Once it runs, nothing is allocated
/// but XCB's replies.
class ScreenCaptureLoop {
  public:
    /// Hears of pictures on the loop's thread. `time` is `CLOCK_MONOTONIC`.
    class Sink {
      public:
        virtual ~Sink() = default;
        virtual void screenChanged(const CVPixelBufferRef& picture, std::chrono::nanoseconds time) = 0;
        virtual void screenFellStill(std::chrono::nanoseconds time) = 0;
    };

    /// Throws `NSError` if the display isn't there or can't be captured in the way asked for.
    ScreenCaptureLoop(XConnection& connection, const SCContentFilter& filter,
                      const SCStreamConfiguration& configuration);

    /// Reads the screen at once, then whenever it changes. Comes back only by an exception: `NSError` when the display
    /// or the connection, which may be hung up for the purpose, has gone; or what `sink` throws.
    [[noreturn]] void run(Sink& sink);

  private:
    using Time = FramePacer::Time;

    void noteChanges();
    void noteDamage(const PixelRect& damage, Time now);
    void requireUnchangedDisplay() const;
    void read(Sink& sink);
    Time fill(CVPixelBuffer& picture);
    void wait(std::optional<Time> deadline, bool untilEvent) const;

    XConnection& connection_;
    ScreenWatch watch_;  // before the display is looked at, so that no change of it is missed
    const CGDirectDisplayID displayID_;
    const CGRect displayBounds_;
    const ScreenArea area_;
    const std::unique_ptr<ScreenSource> source_;
    ScreenReader reader_;
    std::optional<CursorOverlay> cursor_;
    FramePacer pacer_;
    bool isOutdated_ = true;  // the area shows something else than the last picture
};

}  // namespace zorvane
