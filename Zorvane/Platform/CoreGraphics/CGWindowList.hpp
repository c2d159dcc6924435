// The window server's list of windows.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"

namespace zorvane {

using CGWindowID = std::uint32_t;
inline constexpr CGWindowID kCGNullWindowID = 0;

/// Which windows are listed. A window server may go on listing a minimised window, or one of another workspace, for
/// either option; `isOnScreen` is false then.
enum class CGWindowListOption : std::uint32_t {
    all = 0,           ///< windows that nobody can see too
    onScreenOnly = 1,  ///< the windows that the desktop shows
};

enum class CGWindowSharingType : std::uint32_t { none = 0, readOnly = 1, readWrite = 2 };

/// What the window server says of one window. Text is valid UTF-8, whatever the window's owner set.
struct CGWindowDescription {
    CGWindowID number = kCGNullWindowID;
    CGRect bounds;                    ///< points, global coordinates, with the decoration
    std::optional<std::string> name;  ///< the title
    std::int64_t layer = 0;           ///< a `CGWindowLevel`
    double alpha = 1;                 ///< 0 to 1
    bool isOnScreen = false;
    std::int64_t memoryUsage = 0;  ///< bytes of the picture that the server keeps; an estimate
    CGWindowSharingType sharingState = CGWindowSharingType::readOnly;
    std::string ownerName;      ///< the application's name; empty when unknown
    std::int32_t ownerPID = 0;  ///< 0 when unknown

    bool operator==(const CGWindowDescription&) const = default;
};

/// Queries about windows. Any thread may call; every call reads anew. A window that goes away meanwhile is left out. A
/// server that can't be asked has no windows.
class CGWindowList {
  public:
    virtual ~CGWindowList() = default;

    /// The windows front to back. `relativeToWindow` has no meaning for these options and is `kCGNullWindowID`.
    virtual std::vector<CGWindowDescription> copyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow) = 0;

    /// The ids of the same windows in the same order; nothing when there are none.
    virtual std::optional<std::vector<CGWindowID>> create(CGWindowListOption option, CGWindowID relativeToWindow) = 0;

    /// The windows among `ids` that exist, in the order of `ids`. Costs about as many questions as there are ids,
    /// however many windows the desktop has.
    virtual std::vector<CGWindowDescription> createDescriptionFromArray(const std::vector<CGWindowID>& ids) = 0;

    /// Calls `handler` after each change of any window that the answers above would show, on any thread, until the
    /// token goes. Changes before somebody asks may give one call together. The handler only signals.
    virtual NSKeyValueObservation observe(std::function<void()> handler) = 0;
};

}  // namespace zorvane
