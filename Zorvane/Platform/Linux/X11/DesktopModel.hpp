// The windows of a desktop, kept up to date by the X server's events.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XWindow.hpp"
#include "Zorvane/Platform/Linux/X11/XWindowOrder.hpp"

namespace zorvane {

struct DesktopEvent;

/// What an event told of.
struct DesktopChanges {
    bool displays = false;
    bool activeWindow = false;
    bool applications = false;  ///< a window came or went, or bears another name
    bool windows = false;       ///< what is known of the windows is out of date, and was not before

    bool any() const { return displays || activeWindow || applications || windows; }
    DesktopChanges& operator|=(const DesktopChanges& other) {
        displays |= other.displays;
        activeWindow |= other.activeWindow;
        applications |= other.applications;
        windows |= other.windows;
        return *this;
    }
};

/// The desktop at one moment. Never changes.
struct DesktopState {
    std::vector<std::shared_ptr<const XWindow>> windows;  ///< front to back
    std::uint32_t activeWindow = 0;                       ///< 0 for none

    /// Null if there is no such window.
    const XWindow* find(std::uint32_t windowID) const;
};

/// Asks the server once about everything and after that only about what events say has changed; as long as none come,
/// it asks nothing. Events are selected before the first question, and are looked at after the answers, so that no
/// change slips through. One thread at a time.
class DesktopModel {
  public:
    /// Selects the events. Waits for the server, for one round trip.
    explicit DesktopModel(std::shared_ptr<XConnection> connection);

    const std::shared_ptr<XConnection>& connection() const { return connection_; }

    /// Takes the events that have arrived and notes what is to be asked anew. Doesn't wait.
    DesktopChanges takeEvents();

    /// Whether something is to be asked about the windows.
    bool isOutdated() const { return isOrderOutdated_ || !outdated_.empty(); }
    /// Asks it. Waits for the server.
    void refresh();

    /// As of the last refresh. The same object until something changes.
    std::shared_ptr<const DesktopState> state() const { return state_; }

  private:
    struct Entry {
        std::shared_ptr<const XWindow>
            window;  // null until it is read, and for one that is no window of an application
        bool isOutdated = true;
        bool isPlaceKnown = false;
    };

    DesktopChanges note(const DesktopEvent& event);
    DesktopChanges noteStructure(const DesktopEvent& event);
    DesktopChanges noteRootProperty(std::uint32_t property);
    DesktopChanges noteWindowProperty(std::uint32_t window, std::uint32_t property);
    std::uint32_t windowIn(std::uint32_t frame) const;
    void markOutdated(std::uint32_t window);
    void markAllOutdated();
    void readOrder();
    void readWindows(const std::vector<std::uint32_t>& windows);
    void readPlaces(const std::vector<std::uint32_t>& windows);
    void rebuildState();
    void watch(std::uint32_t window, std::uint32_t events);

    const std::shared_ptr<XConnection> connection_;
    const WindowAtoms atoms_;
    XWindowOrder order_;
    std::unordered_map<std::uint32_t, Entry> entries_;           // by window
    std::unordered_map<std::uint32_t, std::uint32_t> contents_;  // what a window manager's frame holds
    std::vector<std::uint32_t> outdated_;                        // each once
    bool isOrderOutdated_ = true;
    std::shared_ptr<const DesktopState> state_ = std::make_shared<DesktopState>();
};

}  // namespace zorvane
