#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"

#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegImageReader.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegMediaReader.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegMediaWriting.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegVideoConverter.hpp"
#include "Zorvane/Platform/Linux/LinuxCaptureAccess.hpp"
#include "Zorvane/Platform/Linux/LinuxCaptureDevices.hpp"
#include "Zorvane/Platform/Linux/LinuxScreenCapture.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneDevices.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevices.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/System/ApplicationCatalog.hpp"
#include "Zorvane/Platform/Linux/System/CaptureHardware.hpp"
#include "Zorvane/Platform/Linux/System/MachineModel.hpp"
#include "Zorvane/Platform/Linux/System/UserDefaults.hpp"
#include "Zorvane/Platform/Linux/X11/Cursor/X11Cursors.hpp"
#include "Zorvane/Platform/Linux/X11/Cursor/X11DisplayLink.hpp"
#include "Zorvane/Platform/Linux/X11/DesktopWatch.hpp"
#include "Zorvane/Platform/Linux/X11/Input/X11Events.hpp"
#include "Zorvane/Platform/Linux/X11/X11Displays.hpp"
#include "Zorvane/Platform/Linux/X11/X11ScreenCapture.hpp"
#include "Zorvane/Platform/Linux/X11/X11WindowList.hpp"
#include "Zorvane/Platform/Linux/X11/X11Workspace.hpp"
#include "Zorvane/Platform/Linux/X11/XSession.hpp"

namespace zorvane {

Platform makeLinuxPlatform() {
    const auto session = std::make_shared<XSession>();
    const auto desktop = std::make_shared<DesktopWatch>();
    const auto catalog = std::make_shared<ApplicationCatalog>(dataDirectories());
    const auto pipeWire = std::make_shared<PipeWireSession>();
    Platform platform;
    platform.clock = MonotonicClock::shared();
    platform.displays = std::make_shared<X11Displays>(session, desktop);
    platform.displayLinks = std::make_shared<X11DisplayLinks>(platform.displays);
    platform.cursors = std::make_shared<X11Cursors>();
    platform.audioConverting = std::make_shared<FFmpegAudioConverting>();
    platform.videoConverting = std::make_shared<FFmpegVideoConverting>();
    platform.captureDevices = std::make_shared<LinuxCaptureDevices>(
        std::make_shared<PipeWireCaptureDevices>(pipeWire, platform.audioConverting, platform.videoConverting),
        std::make_shared<PhoneDevices>());
    platform.captureHardware = std::make_shared<CaptureHardware>();
    platform.platformExpert = std::make_shared<MachineModel>();
    platform.userDefaults = std::make_shared<UserDefaults>();
    platform.captureAccess = std::make_shared<LinuxCaptureAccess>(session);
    platform.windowList = std::make_shared<X11WindowList>(desktop, catalog);
    platform.workspace = std::make_shared<X11Workspace>(desktop, catalog, session, readImageFile);
    platform.screenCapture = std::make_shared<LinuxScreenCapture>(std::make_shared<X11ScreenCapture>(session, catalog),
                                                                  pipeWire, platform.audioConverting, catalog);
    platform.events = std::make_shared<X11Events>(session);
    platform.eventMonitors = std::make_shared<X11EventMonitors>(platform.events);
    platform.mediaWriting = std::make_shared<FFmpegMediaWriting>();
    platform.mediaReading = std::make_shared<FFmpegMediaReader>();
    return platform;
}

}  // namespace zorvane
