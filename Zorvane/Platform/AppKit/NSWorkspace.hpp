// The running applications, and which one is in front.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/AppKit/NSImage.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"

namespace zorvane {

struct NSRunningApplication {
    std::int32_t processIdentifier = 0;
    std::optional<std::string> localizedName;
    std::optional<std::string> bundleIdentifier;

    bool operator==(const NSRunningApplication&) const = default;
};

/// Any thread may call. Handlers run on any thread, one at a time per observation; they only signal.
class NSWorkspace {
  public:
    using ChangeHandler = std::function<void()>;

    virtual ~NSWorkspace() = default;

    /// Each application once, in no promised order.
    virtual std::vector<NSRunningApplication> runningApplications() = 0;
    virtual std::optional<NSRunningApplication> frontmostApplication() = 0;

    /// Calls `handler` after each change of `runningApplications` that the system tells of. A system that tells of none
    /// never calls: whoever needs to know all changes asks from time to time too.
    virtual NSKeyValueObservation observeRunningApplications(ChangeHandler handler) = 0;
    virtual NSKeyValueObservation observeFrontmostApplication(ChangeHandler handler) = 0;

    /// The application's icon; nothing when it has none. May read files.
    virtual std::optional<NSImage> icon(std::int32_t processIdentifier) = 0;
};

}  // namespace zorvane
