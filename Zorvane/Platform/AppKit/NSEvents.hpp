// Watching events as a user interface does.
#pragma once

#include <cstdint>
#include <memory>

#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"

namespace zorvane {

/// A set of event types: bit number t for the type t.
using NSEventMask = std::uint64_t;

/// Needs no permission for the mouse. Any thread. A monitor is null if it can't be had for a reason that isn't known;
/// `NSError` is thrown, with a text for the user, if it is. One that the system ends says so as a tap does.
class NSEvents {
  public:
    virtual ~NSEvents() = default;

    /// Hears events that are for other programs, or for all programs where the two can't be told apart.
    virtual std::unique_ptr<CGEventListener> addGlobalMonitor(NSEventMask mask, CGEventHandler handler) = 0;
    /// Hears the rest: together the two hear each event once.
    virtual std::unique_ptr<CGEventListener> addLocalMonitor(NSEventMask mask, CGEventHandler handler) = 0;
};

}  // namespace zorvane
