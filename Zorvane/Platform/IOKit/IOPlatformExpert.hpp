// What machine this is.
#pragma once

#include <optional>
#include <string>

namespace zorvane {

/// Any thread may call.
class IOPlatformExpert {
  public:
    virtual ~IOPlatformExpert() = default;

    /// The maker's identifier of the model; nothing when it can't be told.
    virtual std::optional<std::string> model() = 0;

    /// Whether the machine has a lid that covers its own display, camera and microphone when it is closed.
    virtual bool hasLid() = 0;
};

}  // namespace zorvane
