#include "DeviceChoice.hpp"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "DesktopAnswer.hpp"
#include "Figures.hpp"
#include "UserError.hpp"
#include "Zorvane/Sources/ZVAppleDevice.hpp"
#include "Zorvane/Sources/ZVCamera.hpp"
#include "Zorvane/Sources/ZVMicrophone.hpp"

namespace zorvane::cli {
namespace {

constexpr const char* noMicrophone =
    "There is no microphone. Plug one in; \"zorvane permissions\" says whether they may be recorded.";
constexpr const char* noCamera =
    "There is no camera. Plug one in; \"zorvane permissions\" says whether they may be recorded.";
constexpr const char* noDevice =
    "There is no phone or tablet. Connect it with an HDMI adapter to a capture card, which is listed then.";

template <class Device>
std::string preferredOf(const char* none) {
    const auto preferred = Device::preferred();
    if (!preferred) {
        throw userError(none);
    }
    return preferred->id();
}

template <class Devices>
std::string listed(const Devices& devices) {
    std::vector<std::string> names;
    for (const auto& device : devices) {
        names.push_back(printable(fmt::format("{} ({})", device->id(), device->localizedName())));
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

/// `wanted`, if it is among `devices`. `kind` names one of them for people, `none` says that there are none.
template <class Devices>
std::string known(const std::string& wanted, const Devices& devices, std::string_view kind, const char* none) {
    if (devices.empty()) {
        throw userError(none);
    }
    if (std::ranges::none_of(devices, [&](const auto& device) { return device->id() == wanted; })) {
        throw userError(
            fmt::format("There is no {0} \"{1}\". Known {0}s: {2}.", kind, printable(wanted), listed(devices)));
    }
    return wanted;
}

}  // namespace

std::string chooseMicrophone(const std::string& wanted, std::stop_token stopToken) {
    const auto choose = [wanted] {
        return wanted == "default" ? preferredOf<ZVMicrophone>(noMicrophone)
                                   : known(wanted, ZVMicrophone::microphones(), "microphone", noMicrophone);
    };
    return awaitDesktop(choose, std::move(stopToken));
}

std::string chooseCamera(const std::string& wanted, std::stop_token stopToken) {
    constexpr auto includingDeskView = true;
    const auto choose = [wanted] {
        return wanted == "default" ? preferredOf<ZVCamera>(noCamera)
                                   : known(wanted, ZVCamera::cameras(includingDeskView), "camera", noCamera);
    };
    return awaitDesktop(choose, std::move(stopToken));
}

std::string chooseDevice(const std::string& wanted, std::stop_token stopToken) {
    const auto choose = [wanted] { return known(wanted, ZVAppleDevice::appleDevices().get(), "device", noDevice); };
    return awaitDesktop(choose, std::move(stopToken));
}

}  // namespace zorvane::cli
