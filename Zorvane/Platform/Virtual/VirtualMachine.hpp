// The machine under a virtual desktop: its model, its lid, and its switch for the screens of phones.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Zorvane/Platform/CoreMediaIO/CMIOHardware.hpp"
#include "Zorvane/Platform/IOKit/IOPlatformExpert.hpp"

namespace zorvane {

class VirtualDesktop;

/// What machine it is, for a script to say.
struct VirtualMachine {
    std::optional<std::string> model = "Virtual1,1";
    bool hasLid = false;
    std::int32_t screenCaptureDevicesStatus = 0;  ///< what switching them on gives; anything but 0 fails
};

class VirtualPlatformExpert final : public IOPlatformExpert {
  public:
    explicit VirtualPlatformExpert(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    std::optional<std::string> model() override;
    bool hasLid() override;

  private:
    const std::shared_ptr<VirtualDesktop> desktop_;
};

/// Knows one property, the one that makes phones show up.
class VirtualCMIOHardware final : public CMIOHardware {
  public:
    explicit VirtualCMIOHardware(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    std::int32_t setPropertyData(CMIOObjectID object, const CMIOObjectPropertyAddress& address, std::size_t size,
                                 const void* data) override;

  private:
    const std::shared_ptr<VirtualDesktop> desktop_;
};

}  // namespace zorvane
