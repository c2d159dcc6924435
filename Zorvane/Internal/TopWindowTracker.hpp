// Follows which window is in front on a display, and where exactly it is.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Zorvane/Internal/ChangeSignal.hpp"
#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"
#include "Zorvane/Sources/ZVDisplay.hpp"
#include "Zorvane/Sources/ZVWindow.hpp"

namespace zorvane {

/// Which window is in front comes from the list of windows, ten times a second at most; where that one is, from the
/// window server itself, at once after every change that it tells of, a thousand times a second at most. As long as
/// nothing changes, nothing runs.
///
/// The front window of a display is the first one in the list that lies on this display more than on any other. Lives
/// until the last reference goes; its streams end then. Any thread.
class TopWindowTracker : public std::enable_shared_from_this<TopWindowTracker> {
  public:
    struct WindowSnapshot {
        std::uint32_t windowID = 0;
        std::optional<std::string> windowTitle;
        std::optional<std::int32_t> applicationID;  ///< process id
        std::optional<std::string> applicationName;
        ZVWindow::Level level;
        CGRect topLeftFrame;  ///< points, global coordinates, origin at the top left

        bool operator==(const WindowSnapshot&) const = default;
    };

    struct Update {
        double timestamp = 0;                          ///< seconds on the host time clock
        std::optional<WindowSnapshot> windowSnapshot;  ///< absent while no window is in front

        bool operator==(const Update&) const = default;
    };

    /// Begins to follow. `displayID` is the window server's number, not the one by which a schema names a display;
    /// without one the first window of the list counts, wherever it is. Blocks for the desktop.
    static std::shared_ptr<TopWindowTracker> make(std::optional<CGDirectDisplayID> displayID,
                                                  ZVWindow::FilterOptions windowFilterOptions);

    ~TopWindowTracker();
    TopWindowTracker(const TopWindowTracker&) = delete;
    TopWindowTracker& operator=(const TopWindowTracker&) = delete;

    /// The state of now, then each that differs from the one before, at rising times. Who takes them slowly gets the
    /// latest one only. Every stream looks for itself, until it is dropped.
    AsyncStream<Update> updates();

  private:
    TopWindowTracker(std::optional<CGDirectDisplayID> displayID, ZVWindow::FilterOptions windowFilterOptions)
        : targetDisplayID_(displayID), windowFilterOptions_(windowFilterOptions) {}

    void start();
    static Task<> followWindows(std::weak_ptr<TopWindowTracker> weak, AsyncStream<ZVWindow::List> updates);
    static Task<> followDisplays(std::weak_ptr<TopWindowTracker> weak, AsyncStream<ZVDisplay::List> updates);
    static Task<> poll(std::weak_ptr<const TopWindowTracker> weak, AsyncStream<ChangeSignal::Change> changes,
                       AsyncStreamSource<Update> source);
    static std::optional<Update> look(const std::weak_ptr<const TopWindowTracker>& weak);

    void processUpdate(const ZVWindow::List& windows, const ZVDisplay::List& displays);
    std::shared_ptr<ZVWindow> findTopWindow(const ZVWindow::List& windows, const ZVDisplay::List& displays) const;
    std::shared_ptr<ZVWindow> topWindow() const;
    Update currentUpdate() const;

    const std::optional<CGDirectDisplayID> targetDisplayID_;
    const ZVWindow::FilterOptions windowFilterOptions_;
    mutable Mutex mutex_;
    std::shared_ptr<ZVWindow> topWindow_ ZV_GUARDED_BY(mutex_);
    const std::shared_ptr<ChangeSignal> changes_ = std::make_shared<ChangeSignal>();
    NSKeyValueObservation windowListObservation_;
    TaskHandle<> windowUpdatesTask_;
    TaskHandle<> displayUpdatesTask_;
};

}  // namespace zorvane
