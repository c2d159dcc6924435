// What the system lets this process capture.
#pragma once

#include <functional>

#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/ZVPermission.hpp"

namespace zorvane {

/// Preflights and requests of every permission. Any thread may call.
class CaptureAccess {
  public:
    virtual ~CaptureAccess() = default;

    /// How a permission stands now. Never asks the user. Waits for the services concerned, seconds at most.
    virtual ZVPermissionReport report(ZVPermission permission) = 0;

    /// Has the system ask the user, if that is how the permission is given and it isn't settled. Returns what is
    /// allowed now, without waiting for the answer.
    virtual bool request(ZVPermission permission) = 0;

    /// The same for devices of a media type; calls `completion` once, with whether access is granted, on any thread,
    /// possibly inside this call.
    virtual void requestAccess(AVMediaType mediaType, std::function<void(bool isGranted)> completion) = 0;

    /// Whether the application says what it wants the devices for, where the system demands that before it asks.
    virtual bool hasUsageDescription(AVMediaType mediaType) = 0;
};

}  // namespace zorvane
