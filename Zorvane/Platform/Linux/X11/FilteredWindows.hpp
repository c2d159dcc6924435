// The windows of a screen, and which of them a filter shows.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

#include "Zorvane/Platform/Linux/X11/EventBacklog.hpp"
#include "Zorvane/Platform/Linux/X11/PictureFormats.hpp"
#include "Zorvane/Platform/Linux/X11/WindowEvents.hpp"
#include "Zorvane/Platform/Linux/X11/WindowStack.hpp"
#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"

namespace zorvane {

class XConnection;

/// Follows the top-level windows by the root window's events, and has the server keep what each of them holds apart
/// (COMPOSITE's automatic redirection: the screen looks as before) until the connection ends.
///
/// A window is shown only once it is known to be one that the filter lets through, and what isn't certain to be its own
/// is veiled. Windows that aren't shown are followed, but what is painted in them isn't. One thread.
class FilteredWindows final : private WindowEventHandler {
  public:
    class Observer {
      public:
        /// Shown windows look otherwise within this part of the root window.
        virtual void lookChanged(const PixelRect& rect) = 0;
        /// A shown window was painted where that can't be seen. Nothing is to be drawn.
        virtual void paintedOutOfSight() = 0;

      protected:
        ~Observer() = default;
    };

    /// Takes stock, with the server to itself for some round trips. `formats` and `observer` outlive this, and hear
    /// nothing yet.
    FilteredWindows(XConnection& connection, const SCContentFilter& filter, const PictureFormats& formats,
                    Observer& observer);

    /// Takes an event, of whatever kind. Waits for the server's answers to what a new window is.
    void note(const xcb_generic_event_t& event);
    /// Takes the pixmaps that windows have got since. True if that waited for the server; what windows hold may be
    /// drawn once the events that came meanwhile are noted too.
    bool settle();
    /// To be called before what windows hold is drawn. Doesn't wait.
    void acknowledgePainting();
    /// Whether a window that was shown then has turned out to be one that isn't to be: it may have become that before
    /// it was drawn.
    bool hasShownTooMuch() const { return hasShownTooMuch_; }

    const WindowStack& stack() const { return stack_; }

  private:
    void created(std::uint32_t window, const WindowPlace& place) override;
    void destroyed(std::uint32_t window) override;
    void mapped(std::uint32_t window) override;
    void unmapped(std::uint32_t window) override;
    void configured(std::uint32_t window, const WindowPlace& place, std::uint32_t siblingBelow) override;
    void moved(std::uint32_t window, std::int32_t x, std::int32_t y) override;
    void raised(std::uint32_t window) override;
    void lowered(std::uint32_t window) override;
    void reparented(std::uint32_t window, std::uint32_t parent) override;
    void familyChanged(std::uint32_t window) override;
    void propertyChanged(std::uint32_t window, std::uint32_t property) override;
    void shaped(const xcb_generic_event_t& event);
    void painted(const xcb_generic_event_t& event);

    void takeStock();
    std::vector<StackedWindow*> addAll();
    StackedWindow& addExisting(std::uint32_t window);
    void map(StackedWindow& window);
    void unmap(StackedWindow& window);
    void place(StackedWindow& window, const WindowPlace& place);

    void identify(StackedWindow& window);
    WindowVerdict verdictOn(const StackedWindow& window) const;
    void identifyAgain(StackedWindow& window);
    void tellLook(const StackedWindow& window) const;
    void distrustPainting(const PixelRect& rect) const;

    XConnection& connection_;
    const SCContentFilter filter_;
    const WindowAtoms atoms_;
    const PictureFormats& formats_;
    Observer& observer_;
    WindowStack stack_;
    bool hasShownTooMuch_ = false;
    EventBacklog backlog_;
};

}  // namespace zorvane
