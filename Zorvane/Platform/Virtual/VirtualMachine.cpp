#include "Zorvane/Platform/Virtual/VirtualMachine.hpp"

#include <cstring>

#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {
namespace {

constexpr CMIOObjectPropertyAddress allowScreenCaptureDevices{0x79657320, 0x676C6F62, 0};  // 'yes ', 'glob'
constexpr std::int32_t unknownProperty = 0x77686F3F;                                       // 'who?'
constexpr std::int32_t badPropertySize = 0x2173697A;                                       // '!siz'

}  // namespace

std::optional<std::string> VirtualPlatformExpert::model() {
    return desktop_->withState([](VirtualDesktopState& state) { return state.machine.model; });
}

bool VirtualPlatformExpert::hasLid() {
    return desktop_->withState([](VirtualDesktopState& state) { return state.machine.hasLid; });
}

std::int32_t VirtualCMIOHardware::setPropertyData(CMIOObjectID object, const CMIOObjectPropertyAddress& address,
                                                  std::size_t size, const void* data) {
    if (object != kCMIOObjectSystemObject || address != allowScreenCaptureDevices) {
        return unknownProperty;
    }
    std::uint32_t value = 0;
    if (size != sizeof value) {
        return badPropertySize;
    }
    std::memcpy(&value, data, sizeof value);
    const std::int32_t status =
        desktop_->withState([](VirtualDesktopState& state) { return state.machine.screenCaptureDevicesStatus; });
    if (status == 0) {
        desktop_->captureDevices()->showPhones(value != 0);
    }
    return status;
}

}  // namespace zorvane
