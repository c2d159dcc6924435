// The cursors of a virtual desktop.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/AppKit/NSCursor.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

/// The screen shows what the script says; the theme has a cursor of every type.
class VirtualCursors final : public NSCursors {
  public:
    explicit VirtualCursors(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    std::optional<NSCursor> currentSystemCursor() override;
    std::optional<NSCursor> systemCursor(ZVCursorType type) override;

  private:
    const std::shared_ptr<VirtualDesktop> desktop_;
};

}  // namespace zorvane
