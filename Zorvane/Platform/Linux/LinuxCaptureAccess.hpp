// The permissions of a Linux desktop.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/AVFoundation/CaptureAccess.hpp"

namespace zorvane {

class XSession;

/// Who may connect to the X server and to PipeWire may capture; nobody is asked, so a request is a report.
class LinuxCaptureAccess final : public CaptureAccess {
  public:
    explicit LinuxCaptureAccess(std::shared_ptr<XSession> session) : session_(std::move(session)) {}

    ZVPermissionReport report(ZVPermission permission) override;
    bool request(ZVPermission permission) override;
    void requestAccess(AVMediaType mediaType, std::function<void(bool isGranted)> completion) override;
    /// Linux demands none.
    bool hasUsageDescription(AVMediaType) override { return true; }

  private:
    const std::shared_ptr<XSession> session_;
};

}  // namespace zorvane
