// The permissions of a virtual desktop.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/AVFoundation/CaptureAccess.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

/// As the script says. A question is put to the user when first asked for, and answered after the scripted time; who
/// asks meanwhile gets an answer of its own, after the same time.
class VirtualCaptureAccess final : public CaptureAccess {
  public:
    explicit VirtualCaptureAccess(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    ZVPermissionReport report(ZVPermission permission) override;
    bool request(ZVPermission permission) override;
    void requestAccess(AVMediaType mediaType, std::function<void(bool isGranted)> completion) override;
    bool hasUsageDescription(AVMediaType mediaType) override;

  private:
    VirtualAccess access(ZVPermission permission) const;
    void ask(ZVPermission permission, std::function<void(bool isGranted)> completion);

    const std::shared_ptr<VirtualDesktop> desktop_;
};

}  // namespace zorvane
