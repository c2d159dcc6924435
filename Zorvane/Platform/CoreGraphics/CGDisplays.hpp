// The window server's displays: what is active, where it lies, what it is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"

namespace zorvane {

/// What the window server calls a display now. It may change when a display is unplugged and comes back.
using CGDirectDisplayID = std::uint32_t;

/// Everything the window server says of one display, read at one moment.
struct CGDisplayProperties {
    bool isMain = false;
    bool isActive = false;
    bool isBuiltIn = false;
    CGDirectDisplayID mirrors = 0;  ///< the display that this one mirrors, 0 for none
    CGRect bounds;                  ///< points, global coordinates
    double rotation = 0;            ///< degrees, clockwise
    CGSize physicalSize;            ///< millimetres; zero when unknown
    std::uint32_t modelNumber = 0;
    /// Stable over reconnection: the panel's own serial number, else a number derived from what identifies it.
    std::uint32_t serialNumber = 0;
    std::uint32_t unitNumber = 0;
    std::uint32_t vendorNumber = 0;
    std::optional<std::string> localizedName;  ///< the panel's name for people, where it gives one
};

/// A display's current mode: its size in points and in pixels. They differ on a scaled (HiDPI) display.
struct CGDisplayMode {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t pixelWidth = 0;
    std::uint32_t pixelHeight = 0;
    double refreshRate = 0;  ///< Hz; 0 when unknown
};

/// What a reconfiguration did to a display; bits.
enum class CGDisplayChangeSummaryFlags : std::uint32_t {
    beginConfiguration = 1U << 0,
    moved = 1U << 1,
    setMain = 1U << 2,
    setMode = 1U << 3,
    add = 1U << 4,
    remove = 1U << 5,
    enabled = 1U << 8,
    disabled = 1U << 9,
    mirror = 1U << 10,
    unMirror = 1U << 11,
    desktopShapeChanged = 1U << 12,
};

using CGDisplayReconfigurationCallBack = void (*)(CGDirectDisplayID displayID, CGDisplayChangeSummaryFlags flags,
                                                  void* userInfo);

/// Queries about displays. Any thread may call; every call reads anew.
class CGDisplays {
  public:
    virtual ~CGDisplays() = default;

    /// The active displays, the main one first. Throws `CGErrorDescription` when the window server can't be asked.
    virtual std::vector<CGDirectDisplayID> activeDisplayList() = 0;

    /// What is known of one display; nothing when there is no such display.
    virtual std::optional<CGDisplayProperties> properties(CGDirectDisplayID displayID) = 0;

    /// The display's mode; nothing when there is no such display or it has no mode.
    virtual std::optional<CGDisplayMode> displayMode(CGDirectDisplayID displayID) = 0;

    /// Has `callback` called with `userInfo` after each change of a display, on any thread, one call at a time; a
    /// change of everything may come as one call with the display 0. A server that goes away and comes back counts as a
    /// change. A platform whose displays never change need not do anything.
    virtual void registerReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) {
        static_cast<void>(callback);
        static_cast<void>(userInfo);
    }
    /// Ends what was registered with the same arguments. Afterwards no call is under way, unless this is called inside
    /// it.
    virtual void removeReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) {
        static_cast<void>(callback);
        static_cast<void>(userInfo);
    }
};

/// The main display; 0, which no display has, when there is none or the window server can't be asked. Any thread.
CGDirectDisplayID CGMainDisplayID(CGDisplays& displays);

}  // namespace zorvane
