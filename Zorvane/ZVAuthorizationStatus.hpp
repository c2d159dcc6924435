// The permissions that a recording needs: what they are now, and how to ask for them.
#pragma once

#include "Zorvane/ZVPermission.hpp"
#include "Zorvane/ZVTask.hpp"

namespace zorvane {

/// Asks the system anew each time, which may take seconds if one of its services hangs. Any thread.
///
/// On Linux nobody is asked: a process may record the screen and listen to input if the X server lets it connect, and
/// sound and cameras if PipeWire does. There requests change nothing and return what is so already; `report` says what
/// the user has to do.
class ZVAuthorizationStatus {
  public:
    ZVAuthorizationStatus() = delete;

    // What is so, without asking the user.
    static AVAuthorizationStatus camera();
    static AVAuthorizationStatus microphone();
    static bool screenRecording();
    /// The same as `screenRecording`, since one permission covers both. What sound itself needs, `report` says.
    static bool systemAudioRecording();
    static bool inputMonitoring();
    static bool accessibilityControl();

    // Has the system ask the user, unless that is settled, and waits for the answer.
    static ZVTask<bool> requestCameraAccess();
    static ZVTask<bool> requestMicrophoneAccess();

    // Has the system ask the user, unless that is settled, and returns what is allowed now, without waiting for the
    // answer.
    static bool requestScreenRecording();
    /// The same as `requestScreenRecording`.
    static bool requestSystemAudioRecording();
    static bool requestInputMonitoring();
    static bool requestAccessibilityControl();

    /// How a permission stands, why, and what the user can do about it.
    static ZVPermissionReport report(ZVPermission permission);
};

}  // namespace zorvane
