#include "Zorvane/Platform/Virtual/VirtualPlatform.hpp"

#include <utility>

#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Platform/CoreVideo/ClockDisplayLink.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureAccess.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"
#include "Zorvane/Platform/Virtual/VirtualCursors.hpp"
#include "Zorvane/Platform/Virtual/VirtualDisplays.hpp"
#include "Zorvane/Platform/Virtual/VirtualEvents.hpp"
#include "Zorvane/Platform/Virtual/VirtualMachine.hpp"
#include "Zorvane/Platform/Virtual/VirtualMediaWriting.hpp"
#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"
#include "Zorvane/Platform/Virtual/VirtualScreenCapture.hpp"
#include "Zorvane/Platform/Virtual/VirtualUser.hpp"
#include "Zorvane/Platform/Virtual/VirtualUserDefaults.hpp"
#include "Zorvane/Platform/Virtual/VirtualWindowList.hpp"
#include "Zorvane/Platform/Virtual/VirtualWorkspace.hpp"

namespace zorvane {

Platform makeVirtualPlatform() {
    auto desktop = VirtualDesktop::make(MonotonicClock::shared());
    const VirtualDisplay display;
    const SCRunningApplication application{1, "virtual.application", "Virtual Application"};
    VirtualWindow window;
    window.window.windowID = 1;
    window.window.frame = CGRect::make(1200, 120, 480, 270);
    window.window.title = "Virtual Window";
    window.window.isOnScreen = true;
    window.window.owningApplication = application;
    window.color = VirtualColor{0.20, 0.45, 0.35};
    desktop->now().setApplications({application}).setWindows({window});
    desktop->now().animate(display.displayID, {.framesPerPhase = 120, .rest = 2}).playTone(440);
    desktop->now()
        .plugDevice(VirtualDevice::camera("virtual.camera", "Virtual Camera"))
        .plugDevice(VirtualDevice::microphone("virtual.microphone", "Virtual Microphone"))
        .playToMicrophone("virtual.microphone", 330)
        .plugDevice(VirtualDevice::phone("virtual.phone", "Virtual Phone"))
        .playToMicrophone("virtual.phone", 550);
    playUser(*desktop);
    Platform platform = makeVirtualPlatform(std::move(desktop));
    platform.mediaWriting = nullptr;  // the default one, which writes files
    return platform;
}

Platform makeVirtualPlatform(std::shared_ptr<VirtualDesktop> desktop, std::shared_ptr<AVMediaWriting> mediaWriting) {
    Platform platform;
    platform.clock = desktop->clock();
    platform.displays = std::make_shared<VirtualDisplays>(desktop);
    platform.captureAccess = std::make_shared<VirtualCaptureAccess>(desktop);
    platform.captureDevices = desktop->captureDevices();
    platform.captureHardware = std::make_shared<VirtualCMIOHardware>(desktop);
    platform.platformExpert = std::make_shared<VirtualPlatformExpert>(desktop);
    platform.windowList = std::make_shared<VirtualWindowList>(desktop);
    platform.workspace = std::make_shared<VirtualWorkspace>(desktop);
    platform.events = std::make_shared<VirtualEvents>(desktop);
    platform.eventMonitors = std::make_shared<VirtualEventMonitors>(desktop);
    platform.cursors = std::make_shared<VirtualCursors>(desktop);
    platform.displayLinks = std::make_shared<ClockDisplayLinks>(platform.clock, platform.displays);
    platform.userDefaults = std::make_shared<VirtualUserDefaults>();
    platform.screenCapture = std::make_shared<VirtualScreenCapture>(desktop);
    platform.mediaWriting = mediaWriting ? std::move(mediaWriting) : VirtualMediaWriting::make(desktop->clock());
    return platform;
}

}  // namespace zorvane
