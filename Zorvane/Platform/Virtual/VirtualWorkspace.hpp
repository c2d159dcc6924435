// The applications of a virtual desktop.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/AppKit/NSWorkspace.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

/// In front is the application of the frontmost ordinary window. Every change is told, on the thread that makes it.
class VirtualWorkspace final : public NSWorkspace {
  public:
    explicit VirtualWorkspace(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    std::vector<NSRunningApplication> runningApplications() override;
    std::optional<NSRunningApplication> frontmostApplication() override;
    NSKeyValueObservation observeRunningApplications(ChangeHandler handler) override;
    NSKeyValueObservation observeFrontmostApplication(ChangeHandler handler) override;
    std::optional<NSImage> icon(std::int32_t processIdentifier) override;

  private:
    const std::shared_ptr<VirtualDesktop> desktop_;
};

}  // namespace zorvane
