// The screen as a filter shows it.
#pragma once

#include <cstdint>

#include "Zorvane/Platform/Linux/X11/FilteredWindows.hpp"
#include "Zorvane/Platform/Linux/X11/PictureFormats.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenCanvas.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenSource.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"

namespace zorvane {

class XConnection;

/// The windows that a filter lets through, put together from what each of them holds, so that nothing of the others is
/// in it, not even where they lie on top.
class ComposedScreen final : public ScreenSource, private FilteredWindows::Observer {
  public:
    /// Waits for the server. Throws `NSError` if it lacks an extension that is needed.
    ComposedScreen(XConnection& connection, const SCContentFilter& filter, const ScreenArea& area);

    Place place() const override { return {canvas_.pixmap(), 0, 0}; }
    void note(const xcb_generic_event_t& event, ScreenChanges& changes) override;
    bool settle() override { return windows_.settle(); }
    void refresh() override;
    bool showedTooMuch() const override { return windows_.hasShownTooMuch(); }

  private:
    void lookChanged(const PixelRect& rect) override;
    void paintedOutOfSight() override;
    bool isNewBackground(const xcb_generic_event_t& event) const;

    XConnection& connection_;
    const PixelRect area_;  // root window coordinates
    const PictureFormats formats_;
    ScreenCanvas canvas_;
    PixelRect outdated_;  // what of the canvas shows something else than the windows
    ScreenChanges found_;
    FilteredWindows windows_;
};

}  // namespace zorvane
