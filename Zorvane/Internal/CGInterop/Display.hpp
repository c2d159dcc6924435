// A display as the window server tells of it, as a plain value.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"
#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"

namespace zorvane::CGInterop {

/// All of one display, read at one moment. Two are equal when all fields are.
struct Display {
    CGDirectDisplayID displayID = 0;
    std::optional<std::string> nameForTesting;  ///< overrides the computed name
    bool isMain = false;
    bool isActive = false;
    bool isBuiltIn = false;
    std::optional<CGDirectDisplayID> mirrorOf;  ///< the display that this one mirrors
    CGRect frame;                               ///< points, global coordinates, origin at the top left
    double rotation = 0;                        ///< degrees, clockwise
    CGSize physicalSize;                        ///< millimetres
    std::uint32_t modelNumber = 0;
    std::uint32_t serialNumber = 0;  ///< stable over reconnection; what hosts name a display by
    std::uint32_t unitNumber = 0;
    std::uint32_t vendorNumber = 0;

    bool operator==(const Display&) const = default;

    /// A change of one display, or of all of them if the id is 0.
    struct Reconfiguration {
        CGDirectDisplayID displayID = 0;
        CGDisplayChangeSummaryFlags changeSummary{};
    };

    /// All active displays of the current platform: the main one first, then from left to right and top to bottom.
    /// Throws `CGErrorDescription`. Any thread.
    static std::vector<Display> getActiveDisplays();

    /// The ids of the active displays whose area holds `point`, in the window server's order. Throws
    /// `CGErrorDescription`. Any thread.
    static std::vector<CGDirectDisplayID> getActiveDisplays(const CGPoint& containing);

    /// Each reconfiguration from now on. Ends when it is dropped.
    static AsyncStream<Reconfiguration> allReconfigurations();

    /// One display's values; nothing when there is no such display.
    static std::optional<Display> forID(CGDirectDisplayID displayID);

    /// The name for people: the panel's own, else one known from its vendor, else "Display #" and its number. A mirror
    /// says what it mirrors, once around if displays mirror each other. Asks the window server for the panel's name.
    /// Any thread.
    std::string displayName() const;

  private:
    /// `named` holds the mirrors on whose behalf this one is named.
    std::string displayName(std::set<CGDirectDisplayID> named) const;
    std::string ownName() const;
    std::optional<std::string> vendorSerialName() const;
};

}  // namespace zorvane::CGInterop
