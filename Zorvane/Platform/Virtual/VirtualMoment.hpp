// The words of a virtual desktop's script: all that can happen at one moment.
#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/Virtual/VirtualCamera.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevice.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"
#include "Zorvane/Platform/Virtual/VirtualMicrophone.hpp"

namespace zorvane {

class VirtualCaptureDevices;
struct VirtualSessionRefusal;

/// Test patterns in a row: phases in which something moves, with still phases between them.
struct VirtualAnimation {
    double framesPerSecond = 30;
    std::uint32_t framesPerPhase = 120;
    double rest = 0;                      ///< seconds of stillness after each phase
    std::optional<std::uint32_t> frames;  ///< in all; absent: until the display is gone
};

/// One moment of a script. Each word books an event for it, in the order of the words, and gives the moment back:
/// `desktop->at(1).movePointer({5, 5}).playTone(440)`. An event about a display that isn't there does nothing.
class VirtualMoment {
  public:
    VirtualMoment(std::shared_ptr<VirtualDesktop> desktop, std::chrono::nanoseconds hostTime)
        : desktop_(std::move(desktop)), hostTime_(hostTime) {}

    // The picture. Every one of these words counts as a change of the display, or of all displays.
    const VirtualMoment& paint(CGDirectDisplayID displayID, const VirtualColor& color) const;
    const VirtualMoment& paint(CGDirectDisplayID displayID, const VirtualPixelRect& rect,
                               const VirtualColor& color) const;
    const VirtualMoment& paint(CGDirectDisplayID displayID, std::function<void(VirtualScreen&)> painter) const;
    /// The picture of `VirtualScreen::drawTestPattern`, readable with `readFrameCounter`.
    const VirtualMoment& showFrame(CGDirectDisplayID displayID, std::uint32_t number) const;
    /// Test patterns from number 0 on, beginning at this moment.
    const VirtualMoment& animate(CGDirectDisplayID displayID, const VirtualAnimation& animation) const;
    /// Nothing hides the pointer; all else is an event, a drag while a button is held.
    const VirtualMoment& movePointer(std::optional<CGPoint> position) const;
    /// What the pointer looks like, to who asks for the cursor; pictures show it as they always do. See
    /// `virtualCursor`. Nothing: the cursor can't be asked for.
    const VirtualMoment& setCursor(std::optional<NSCursor> cursor) const;

    // Mouse and keyboard. Each of these words is an event.
    /// Numbers as in `CGEvent::mouseButtonNumber`.
    const VirtualMoment& pressButton(std::int64_t number = 0) const;
    const VirtualMoment& releaseButton(std::int64_t number = 0) const;
    /// A key that is held already repeats.
    const VirtualMoment& pressKey(VirtualKey key) const;
    const VirtualMoment& releaseKey(VirtualKey key) const;
    const VirtualMoment& setFlags(CGEventFlags flags) const;
    /// Tells listeners of this event, just as it is.
    const VirtualMoment& tellEvent(CGEvent event) const;
    /// Taps end, with this as their last event.
    const VirtualMoment& disableTaps(CGEventType reason) const;
    /// Listeners hear of events that happen from here on so much later.
    const VirtualMoment& delayEvents(double seconds) const;
    /// New taps, or new monitors, can't be made; nothing mends it.
    const VirtualMoment& failTaps(VirtualListeningFailure failure) const;
    const VirtualMoment& failMonitors(VirtualListeningFailure failure) const;

    // Displays.
    /// A new display, or the same one with another mode, place or name; its screen is black.
    const VirtualMoment& putDisplay(const VirtualDisplay& display) const;
    /// Streams on it stop with `noCaptureSource`.
    const VirtualMoment& removeDisplay(CGDirectDisplayID displayID) const;
    /// `activeDisplayList` fails; `success` mends it.
    const VirtualMoment& failDisplayList(CGError error) const;

    // Windows and applications. An event about a window or an application that isn't there does nothing.
    const VirtualMoment& setWindows(std::vector<VirtualWindow> windows) const;
    /// In front of all others.
    const VirtualMoment& openWindow(const VirtualWindow& window) const;
    const VirtualMoment& moveWindow(std::uint32_t windowID, const CGRect& frame) const;
    const VirtualMoment& raiseWindow(std::uint32_t windowID) const;
    const VirtualMoment& retitleWindow(std::uint32_t windowID, std::optional<std::string> title) const;
    /// Takes it off the screen, and back to where it was. It stays listed meanwhile.
    const VirtualMoment& minimizeWindow(std::uint32_t windowID) const;
    const VirtualMoment& restoreWindow(std::uint32_t windowID) const;
    const VirtualMoment& closeWindow(std::uint32_t windowID) const;
    /// Window queries throw; null mends it.
    const VirtualMoment& failWindowList(std::exception_ptr error) const;
    const VirtualMoment& setApplications(std::vector<SCRunningApplication> applications) const;
    const VirtualMoment& startApplication(const SCRunningApplication& application) const;
    /// Closes its windows too.
    const VirtualMoment& quitApplication(std::int32_t processID) const;
    /// Brings its windows in front of all others, in their order.
    const VirtualMoment& activateApplication(std::int32_t processID) const;
    const VirtualMoment& setIcon(std::int32_t processID, const NSImage& icon) const;

    // Screen capture.
    const VirtualMoment& allowScreenCapture(bool allow) const;
    const VirtualMoment& setAccess(ZVPermission permission, const VirtualAccess& access) const;
    /// What becomes of the next requests for shareable content, one after the other.
    const VirtualMoment& answerContentRequests(std::vector<VirtualAnswer> answers) const;
    const VirtualMoment& failServiceRestart(std::exception_ptr error) const;
    /// Streams can't start; null mends it.
    const VirtualMoment& failStreamStart(std::exception_ptr error) const;
    /// New streams refuse outputs of this type.
    const VirtualMoment& refuseStreamOutput(std::optional<SCStreamOutputType> type) const;
    /// How far the clock of new streams is behind the host clock, in seconds; nothing: they have no clock.
    const VirtualMoment& setStreamClock(std::optional<double> secondsBehind) const;

    // Running streams.
    /// No new picture of this display for so long; the last change shows then.
    const VirtualMoment& holdPictures(CGDirectDisplayID displayID, double seconds) const;
    const VirtualMoment& deliver(CGDirectDisplayID displayID, VirtualOddSample kind) const;
    /// Streams on the display stop; `error` may be null.
    const VirtualMoment& stopStreams(CGDirectDisplayID displayID, std::exception_ptr error) const;
    const VirtualMoment& stopStreams(CGDirectDisplayID displayID, SCStreamErrorCode code) const;

    // Sound.
    /// A sine of `frequency` Hz, of no application; 0 is silence.
    const VirtualMoment& playTone(double frequency) const;
    /// The same of an application, whether it is listed or not.
    const VirtualMoment& playTone(std::int32_t processID, double frequency) const;
    /// Blocks that begin in the next `seconds` get lost.
    const VirtualMoment& loseSound(double seconds) const;
    /// Blocks that begin from here on are stamped later by `seconds` (a gap), or earlier if negative (an overlap).
    const VirtualMoment& shiftSound(double seconds) const;

    /// Streams give no sound until further notice, and say so.
    const VirtualMoment& interruptSound(std::exception_ptr reason) const;
    const VirtualMoment& resumeSound() const;

    // The machine and the devices at it.
    const VirtualMoment& setMachine(VirtualMachine machine) const;
    /// Built-in displays go away, as by `removeDisplay`, and built-in cameras and microphones are suspended.
    const VirtualMoment& closeLid() const;
    const VirtualMoment& openLid() const;
    /// A new device, or another one in the place of the one with the same id.
    const VirtualMoment& plugDevice(VirtualDevice device) const;
    const VirtualMoment& unplugDevice(std::string uniqueID) const;
    const VirtualMoment& renameDevice(std::string uniqueID, std::string name) const;
    /// The device stays in the list, and says that it isn't connected.
    const VirtualMoment& disconnectDevice(std::string uniqueID) const;
    const VirtualMoment& connectDevice(std::string uniqueID) const;
    const VirtualMoment& suspendDevice(std::string uniqueID) const;
    const VirtualMoment& resumeDevice(std::string uniqueID) const;
    /// Another program takes it for itself, so that it can't be opened, and lets it go.
    const VirtualMoment& occupyDevice(std::string uniqueID) const;
    const VirtualMoment& freeDevice(std::string uniqueID) const;
    const VirtualMoment& pairDevice(std::string uniqueID, AVCaptureDevicePairing pairing) const;
    /// Changes what a microphone or phone hears or how it fails.
    const VirtualMoment& changeMicrophone(std::string uniqueID, std::function<void(VirtualMicrophone&)> change) const;
    /// Somebody whistles into a microphone; 0 is silence.
    const VirtualMoment& playToMicrophone(std::string uniqueID, double frequency) const;
    /// Its blocks that begin in the next `seconds` get lost.
    const VirtualMoment& loseMicrophoneSound(std::string uniqueID, double seconds) const;
    /// Changes what a camera sees or a phone shows, or how it fails: a lock, a shutter, another format.
    const VirtualMoment& changeCamera(std::string uniqueID, std::function<void(VirtualCamera&)> change) const;
    /// Its pictures that are taken in the next `seconds` are white, or get lost.
    const VirtualMoment& flashAtCamera(std::string uniqueID, double seconds) const;
    const VirtualMoment& loseCameraPictures(std::string uniqueID, double seconds) const;
    /// A quarter turn: width and height change places.
    const VirtualMoment& turnCamera(std::string uniqueID) const;
    /// How far the clock of new capture sessions is behind the host clock, in seconds; nothing: they have no clock.
    const VirtualMoment& setCaptureClock(std::optional<double> secondsBehind) const;
    /// New capture sessions refuse this; nothing mends it.
    const VirtualMoment& refuseInCapture(std::optional<VirtualSessionRefusal> refusal) const;
    /// The user makes it the main one of its media type.
    const VirtualMoment& chooseDevice(AVMediaType mediaType, std::string uniqueID) const;

  private:
    const VirtualMoment& perform(VirtualDesktop::Action action) const;
    const VirtualMoment& change(std::function<void(VirtualDesktopState&)> change) const;
    const VirtualMoment& changeScene(std::function<void(VirtualScene&)> change) const;
    const VirtualMoment& changeWindow(std::uint32_t windowID, std::function<void(SCWindow&)> change) const;
    /// As `changeScene`, and tells streams of all displays that their picture has changed.
    const VirtualMoment& changePicture(std::function<void(VirtualScene&)> change) const;
    /// Tells listeners of the event that `happen` gives, at the pointer's place and the present time.
    const VirtualMoment& changeInput(std::function<CGEvent(VirtualInput&)> happen) const;
    const VirtualMoment& setSoundInterruption(std::exception_ptr reason) const;
    const VirtualMoment& changeDevices(std::function<void(VirtualCaptureDevices&)> change) const;

    std::shared_ptr<VirtualDesktop> desktop_;
    std::chrono::nanoseconds hostTime_;
};

}  // namespace zorvane
