#include <gtest/gtest.h>

#include "Zorvane/Sources/ZVAppleDevice.hpp"
#include "Zorvane/Sources/ZVCamera.hpp"
#include "Zorvane/Sources/ZVMicrophone.hpp"

namespace zorvane {
namespace {

template <class Availability>
struct Row {
    Availability availability;
    std::string_view rawValue, status, recoverySuggestion;
};

template <class Availability>
void expectTexts(const std::vector<Row<Availability>>& rows) {
    for (const auto& row : rows) {
        EXPECT_EQ(rawValue(row.availability), row.rawValue);
        EXPECT_EQ(debugDescription(row.availability), row.rawValue);
        EXPECT_EQ(status(row.availability), row.status);
        EXPECT_EQ(recoverySuggestion(row.availability), row.recoverySuggestion);
    }
}

TEST(DeviceAvailability, TellsPeopleWhatIsTheMatterAndWhatToDo) {
    using Camera = ZVCamera::Availability;
    expectTexts<Camera>({{Camera::available, "available", "Available", ""},
                         {Camera::lidClosed, "lidClosed", "MacBook lid closed", "Open MacBook lid"},
                         {Camera::unknownSuspended, "unknownSuspended", "Suspended", "Unsuspend camera"},
                         {Camera::notConnected, "notConnected", "Not connected", "Connect camera"}});
    using Microphone = ZVMicrophone::Availability;
    expectTexts<Microphone>({{Microphone::available, "available", "Available", ""},
                             {Microphone::lidClosed, "lidClosed", "MacBook lid closed", "Open MacBook lid"},
                             {Microphone::unknownSuspended, "unknownSuspended", "Suspended", "Unsuspend microphone"},
                             {Microphone::notConnected, "notConnected", "Not connected", "Connect microphone"}});
    using Device = ZVAppleDevice::Availability;
    expectTexts<Device>({{Device::available, "available", "Available", ""},
                         {Device::notPaired, "notPaired", "Device not paired", "Tap 'Trust' on iPhone"},
                         {Device::notConnected, "notConnected", "Device not connected", "Connect via cable"},
                         {Device::pairedNeedsConnect, "pairedNeedsConnect", "Device paired, but not connected",
                          "(Re-)connect via cable"},
                         {Device::pairedNeedsReconnect, "pairedNeedsReconnect", "Device paired, needs to reconnect",
                          "Unplug cable, and reconnect again"}});
}

}  // namespace
}  // namespace zorvane
