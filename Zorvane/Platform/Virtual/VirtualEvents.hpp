// Mouse and keyboard of a virtual desktop, for those who listen.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/AppKit/NSEvents.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

/// Listeners hear of an event on the thread that makes it happen, or later if the script says so.
class VirtualEvents final : public CGEvents {
  public:
    explicit VirtualEvents(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    /// Nothing while the pointer is hidden.
    std::optional<CGEvent> create() override;
    std::unique_ptr<CGEventListener> tapCreate(CGEventMask eventsOfInterest, CGEventHandler handler) override;

  private:
    const std::shared_ptr<VirtualDesktop> desktop_;
};

/// All events are for other programs.
class VirtualEventMonitors final : public NSEvents {
  public:
    explicit VirtualEventMonitors(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    std::unique_ptr<CGEventListener> addGlobalMonitor(NSEventMask mask, CGEventHandler handler) override;
    std::unique_ptr<CGEventListener> addLocalMonitor(NSEventMask mask, CGEventHandler handler) override;

  private:
    const std::shared_ptr<VirtualDesktop> desktop_;
};

}  // namespace zorvane
