// Mouse and keyboard of an X session.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AppKit/NSEvents.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"
#include "Zorvane/Platform/Linux/X11/Input/ModifierMap.hpp"

namespace zorvane {

class XConnection;
class XSession;

/// `CGEvents` on the RECORD extension, which needs no permission but the connection.
class X11Events final : public CGEvents {
  public:
    explicit X11Events(std::shared_ptr<XSession> session) : session_(std::move(session)) {}

    /// One round trip; some more the first time. Of buttons those that the core protocol tells of: primary, secondary
    /// and center.
    std::optional<CGEvent> create() override;
    std::unique_ptr<CGEventListener> tapCreate(CGEventMask eventsOfInterest, CGEventHandler handler) override;

  private:
    ModifierMap modifierMap(const XConnection& connection);

    const std::shared_ptr<XSession> session_;
    Mutex mutex_;
    std::optional<ModifierMap> modifierMap_ ZV_GUARDED_BY(mutex_);  ///< layouts differ in keys, hardly ever in this
};

/// `NSEvents` on the same. A client of an X server can't tell its own events from those of others, so the global
/// monitor hears them all, and the local one nothing. A monitor ends as a tap does, with that event as its last.
class X11EventMonitors final : public NSEvents {
  public:
    explicit X11EventMonitors(std::shared_ptr<CGEvents> events) : events_(std::move(events)) {}

    std::unique_ptr<CGEventListener> addGlobalMonitor(NSEventMask mask, CGEventHandler handler) override;
    std::unique_ptr<CGEventListener> addLocalMonitor(NSEventMask mask, CGEventHandler handler) override;

  private:
    const std::shared_ptr<CGEvents> events_;
};

}  // namespace zorvane
