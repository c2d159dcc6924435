// A window on the desktop.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/ZVAsyncStream.hpp"
#include "Zorvane/ZVPublisher.hpp"

namespace zorvane {

/// One window, the same object for as long as the process works on this desktop, also when it has been closed. Its
/// properties change on the main executor and may be read on any thread; those of a closed window are those it had
/// last.
class ZVWindow {
  public:
    enum class Availability {
        available,
        notOnScreen,  ///< minimised, or on another workspace
        closed,
    };

    /// Which windows a list holds.
    enum class FilterOptions {
        default_,      ///< applications' ordinary windows that are on the screen
        onlyOnScreen,  ///< whatever is on the screen: menus, panels and the desktop's own windows too
    };

    /// How high a window is stacked: one of a higher level covers those of a lower one.
    struct Level {
        std::int64_t rawValue = 0;

        auto operator<=>(const Level&) const = default;

        static const Level baseWindow;
        static const Level desktopIconWindow;
        static const Level minimumWindow;
        static const Level desktopWindow;
        static const Level backstopMenu;
        static const Level normal;
        static const Level floating;
        static const Level submenu;
        static const Level tornOffMenu;
        static const Level modalPanel;
        static const Level utilityWindow;
        static const Level mainMenu;
        static const Level statusBar;
        static const Level popUpMenu;
        static const Level screenSaver;
        static const Level overlayWindow;
        static const Level helpWindow;
        static const Level draggingWindow;
        static const Level screenSaverWindow;
        static const Level assistiveTechHighWindow;
        static const Level cursorWindow;
        static const Level maximumWindow;
    };

    using List = std::vector<std::shared_ptr<ZVWindow>>;

    /// The windows, front to back. The first call asks the desktop and blocks for it; from then on the library asks
    /// again ten times a second by itself. A desktop that can't be asked has no windows. Any thread.
    static List windows(FilterOptions options = FilterOptions::default_);
    /// The list, beginning with the one of now, then after each change of a window. Ends when it is dropped.
    static ZVAsyncStream<List> updates(FilterOptions options = FilterOptions::default_);
    /// Those of `windows` that `by` lets through, in the same order, by what they are now.
    static List filtered(const List& windows, FilterOptions by);

    ~ZVWindow();
    ZVWindow(const ZVWindow&) = delete;
    ZVWindow& operator=(const ZVWindow&) = delete;

    /// The window server's number, by which a schema names the window.
    std::uint32_t id() const;

    std::optional<std::string> title() const;
    ZVPublisher<std::optional<std::string>> titlePublisher() const;
    /// With the decoration, in points; the origin is the top left of the main display, y grows downward.
    CGRect frame() const;
    ZVPublisher<CGRect> framePublisher() const;
    Level level() const;
    ZVPublisher<Level> levelPublisher() const;
    std::optional<std::int32_t> applicationProcessID() const;
    ZVPublisher<std::optional<std::int32_t>> applicationProcessIDPublisher() const;
    std::optional<std::string> applicationName() const;
    ZVPublisher<std::optional<std::string>> applicationNamePublisher() const;
    /// Whether a part of it lies on an available display.
    bool insideVisibleFrame() const;
    ZVPublisher<bool> insideVisibleFramePublisher() const;
    Availability availability() const;
    ZVPublisher<Availability> availabilityPublisher() const;

    /// Two are equal if their ids are.
    bool operator==(const ZVWindow& other) const { return id() == other.id(); }

    /// One line for logs.
    std::string debugDescription() const;

  private:
    friend class WindowDiscovery;
    struct State;

    explicit ZVWindow(std::unique_ptr<State> state);

    const std::unique_ptr<State> state_;
};

/// The name of the case.
std::string_view rawValue(ZVWindow::Availability availability);
std::string_view debugDescription(ZVWindow::Availability availability);

}  // namespace zorvane

template <>
struct std::hash<zorvane::ZVWindow> {
    std::size_t operator()(const zorvane::ZVWindow& window) const noexcept {
        return std::hash<std::uint32_t>()(window.id());
    }
};
