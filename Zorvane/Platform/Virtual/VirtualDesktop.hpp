// A desktop in memory that follows a script: the world behind the virtual platform.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/CoreGraphics/CGError.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"
#include "Zorvane/Platform/Virtual/VirtualHandlers.hpp"
#include "Zorvane/Platform/Virtual/VirtualInput.hpp"
#include "Zorvane/Platform/Virtual/VirtualMachine.hpp"
#include "Zorvane/Platform/Virtual/VirtualScene.hpp"
#include "Zorvane/Platform/Virtual/VirtualSceneChange.hpp"
#include "Zorvane/Platform/Virtual/VirtualSound.hpp"
#include "Zorvane/ZVPermission.hpp"

namespace zorvane {

class Executor;
class VirtualCaptureDevices;
class VirtualMoment;

/// What the capture service does with one request for shareable content.
struct VirtualAnswer {
    enum class Kind : std::uint8_t { content, error, never };
    Kind kind = Kind::content;
    double delay = 0;  ///< seconds
    std::exception_ptr error;

    static VirtualAnswer after(double seconds) { return {Kind::content, seconds, nullptr}; }
    static VirtualAnswer failing(std::exception_ptr error, double seconds = 0) { return {Kind::error, seconds, error}; }
    static VirtualAnswer never() { return {Kind::never, 0, nullptr}; }
};

/// A screen sample that is not a new picture in good order.
enum class VirtualOddSample : std::uint8_t {
    idle,           ///< a notice that nothing has changed
    blank,          ///< a notice that the screen is dark
    withoutStatus,  ///< a picture that doesn't say whether it is complete
    invalid,        ///< a buffer that holds nothing
    repeatedTime,   ///< a complete picture, stamped like the one before
    backwardTime,   ///< a complete picture, stamped 10 ms before the one before
    unknownType,    ///< a complete picture, delivered as a type that no stream has
};

/// How one permission stands, and what the user says when asked for one that is not determined.
struct VirtualAccess {
    AVAuthorizationStatus status = AVAuthorizationStatus::authorized;
    bool userAllows = true;
    double secondsToAnswer = 0;
    bool hasUsageDescription = true;  ///< for cameras and microphones
};

/// What is allowed and what goes wrong, beside the picture.
struct VirtualConditions {
    std::map<ZVPermission, VirtualAccess> access;  ///< what isn't named is authorized
    std::optional<CGError> displayListError;
    std::exception_ptr windowListError;
    std::deque<VirtualAnswer> contentAnswers;  ///< for the next requests, in order; later ones are answered at once
    std::exception_ptr serviceRestartError;
    std::exception_ptr streamStartError;
    std::optional<SCStreamOutputType> refusedOutput;
    /// By how much the clock of new streams is behind the host clock; absent: they have no clock, and stamp with the
    /// time since their start.
    std::optional<std::chrono::nanoseconds> streamClockOffset{std::chrono::nanoseconds(0)};
    std::map<CGDirectDisplayID, std::chrono::nanoseconds> picturesHeldUntil;  ///< host times

    bool allowsScreenCapture() const {
        const auto named = access.find(ZVPermission::screenRecording);
        return named == access.end() || named->second.status == AVAuthorizationStatus::authorized;
    }
};

/// All there is, under the desktop's lock.
struct VirtualDesktopState {
    VirtualScene scene;
    VirtualConditions conditions;
    VirtualInput input;
    VirtualSound sound;
    VirtualMachine machine;
    int contentRequests = 0;  ///< so far
    int serviceRestarts = 0;  ///< so far
};

/// Hears what happens on one display, on the thread that makes it happen, without the desktop's lock.
class VirtualDisplayObserver {
  public:
    virtual ~VirtualDisplayObserver() = default;
    virtual CGDirectDisplayID displayID() const = 0;
    virtual void pictureChanged() = 0;
    virtual void oddSample(VirtualOddSample kind) = 0;
    virtual void stopped(std::exception_ptr error) = 0;
    /// Null: there is sound again.
    virtual void soundInterrupted(std::exception_ptr reason) = 0;
};

/// Who hears of mouse and keyboard.
using VirtualEventHandlers = VirtualHandlers<const CGEvent&>;

/// A script says what happens when, one line per event:
///
///     desktop->at(0.5).paint(1, VirtualColor::white());
///     desktop->at(2.0).stopStreams(1, SCStreamErrorCode::userStopped);
///
/// Times are seconds on the clock since the desktop was made. What lies in the past or in the present happens at once,
/// inside the call; the rest when the clock gets there, in order, on a thread of the desktop. Any thread may call.
class VirtualDesktop final : public std::enable_shared_from_this<VirtualDesktop> {
  public:
    using Action = std::function<void(VirtualDesktop& desktop)>;

    /// The first display is the main one.
    static std::shared_ptr<VirtualDesktop> make(std::shared_ptr<HostClock> clock,
                                                std::vector<VirtualDisplay> displays = {VirtualDisplay{}});

    VirtualMoment at(double seconds);
    VirtualMoment now();

    const std::shared_ptr<HostClock>& clock() const { return clock_; }
    /// When the desktop was made, on the clock.
    std::chrono::nanoseconds origin() const { return origin_; }

    const std::shared_ptr<VirtualCaptureDevices>& captureDevices() const { return captureDevices_; }

    /// Calls `use(state)` under the lock and returns what it returns. `use` calls nothing that could enter the desktop.
    template <class Use>
    auto withState(Use&& use) {
        MutexLock lock(mutex_);
        return std::forward<Use>(use)(state_);
    }

    /// Does `action` at a host time: at once if that has come, else on a thread of the desktop, if it still exists
    /// then.
    void perform(std::chrono::nanoseconds hostTime, Action action);
    /// Does `action` at a host time, never inside this call.
    void schedule(std::chrono::nanoseconds hostTime, Action action);

    /// Changes the scene and tells who wants to hear of it.
    void changeScene(const std::function<void(VirtualScene&)>& change);
    const VirtualSceneHandlers& sceneHandlers() const { return sceneHandlers_; }
    const std::shared_ptr<VirtualEventHandlers>& eventHandlers() const { return eventHandlers_; }

    void add(std::weak_ptr<VirtualDisplayObserver> observer);
    std::vector<std::shared_ptr<VirtualDisplayObserver>> observers(CGDirectDisplayID displayID);

  private:
    VirtualDesktop(std::shared_ptr<HostClock> clock, const std::vector<VirtualDisplay>& displays);

    const std::shared_ptr<HostClock> clock_;
    const std::chrono::nanoseconds origin_;
    const std::shared_ptr<Executor> script_;  // a strand: keeps what is due together in order
    const VirtualSceneHandlers sceneHandlers_;
    const std::shared_ptr<VirtualEventHandlers> eventHandlers_ = std::make_shared<VirtualEventHandlers>();
    const std::shared_ptr<VirtualCaptureDevices> captureDevices_;  // with a lock of its own
    Mutex mutex_;
    VirtualDesktopState state_ ZV_GUARDED_BY(mutex_);
    std::vector<std::weak_ptr<VirtualDisplayObserver>> observers_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
