#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"

#include <cmath>
#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

using std::chrono::nanoseconds;

nanoseconds fromSeconds(double seconds) {
    return nanoseconds(std::llround(seconds * 1e9));
}

std::exception_ptr streamError(SCStreamErrorCode code, const char* description) {
    return std::make_exception_ptr(
        NSError(SCStreamErrorDomain, static_cast<std::int64_t>(code), {.localizedDescription = description}));
}

std::vector<SCDisplay> displaysOf(VirtualDesktop& desktop) {
    return desktop.withState(
        [](VirtualDesktopState& state) { return state.scene.shareableContent(SCShareableContentScope::all).displays; });
}

void tellPictureChanged(VirtualDesktop& desktop, CGDirectDisplayID displayID) {
    for (const auto& observer : desktop.observers(displayID)) {
        observer->pictureChanged();
    }
}

/// False when there is no such display.
bool paintDisplay(VirtualDesktop& desktop, CGDirectDisplayID displayID,
                  const std::function<void(VirtualScreen&)>& painter) {
    const bool isThere = desktop.withState([&](VirtualDesktopState& state) {
        VirtualScene::Panel* panel = state.scene.find(displayID);
        if (panel) {
            painter(panel->screen);
        }
        return panel != nullptr;
    });
    if (isThere) {
        tellPictureChanged(desktop, displayID);
    }
    return isThere;
}

struct RunningAnimation {
    CGDirectDisplayID displayID;
    VirtualAnimation animation;
    nanoseconds start;
};

// Each frame's time is counted from the start, so that rounding never adds up.
nanoseconds timeOfFrame(const RunningAnimation& running, std::uint32_t number) {
    const std::uint32_t phasesBefore = number / running.animation.framesPerPhase;
    return running.start +
           fromSeconds(number / running.animation.framesPerSecond + phasesBefore * running.animation.rest);
}

void showAnimationFrame(VirtualDesktop& desktop, const RunningAnimation& running, std::uint32_t number) {
    if (running.animation.frames && number >= *running.animation.frames) {
        return;
    }
    const auto painter = [number](VirtualScreen& screen) { screen.drawTestPattern(number); };
    if (paintDisplay(desktop, running.displayID, painter)) {
        desktop.schedule(timeOfFrame(running, number + 1),
                         [running, number](VirtualDesktop& same) { showAnimationFrame(same, running, number + 1); });
    }
}

}  // namespace

const VirtualMoment& VirtualMoment::perform(VirtualDesktop::Action action) const {
    desktop_->perform(hostTime_, std::move(action));
    return *this;
}

const VirtualMoment& VirtualMoment::change(std::function<void(VirtualDesktopState&)> change) const {
    return perform([change = std::move(change)](VirtualDesktop& desktop) { desktop.withState(change); });
}

const VirtualMoment& VirtualMoment::changeScene(std::function<void(VirtualScene&)> change) const {
    return perform([change = std::move(change)](VirtualDesktop& desktop) { desktop.changeScene(change); });
}

const VirtualMoment& VirtualMoment::changePicture(std::function<void(VirtualScene&)> change) const {
    return perform([change = std::move(change)](VirtualDesktop& desktop) {
        desktop.changeScene(change);
        for (const SCDisplay& display : displaysOf(desktop)) {
            tellPictureChanged(desktop, display.displayID);
        }
    });
}

const VirtualMoment& VirtualMoment::paint(CGDirectDisplayID displayID, const VirtualColor& color) const {
    return paint(displayID, [color](VirtualScreen& screen) { screen.fill(color); });
}

const VirtualMoment& VirtualMoment::paint(CGDirectDisplayID displayID, const VirtualPixelRect& rect,
                                          const VirtualColor& color) const {
    return paint(displayID, [rect, color](VirtualScreen& screen) { screen.fill(rect, color); });
}

const VirtualMoment& VirtualMoment::paint(CGDirectDisplayID displayID,
                                          std::function<void(VirtualScreen&)> painter) const {
    return perform([displayID, painter = std::move(painter)](VirtualDesktop& desktop) {
        paintDisplay(desktop, displayID, painter);
    });
}

const VirtualMoment& VirtualMoment::showFrame(CGDirectDisplayID displayID, std::uint32_t number) const {
    return paint(displayID, [number](VirtualScreen& screen) { screen.drawTestPattern(number); });
}

const VirtualMoment& VirtualMoment::animate(CGDirectDisplayID displayID, const VirtualAnimation& animation) const {
    const RunningAnimation running{displayID, animation, hostTime_};
    return perform([running](VirtualDesktop& desktop) { showAnimationFrame(desktop, running, 0); });
}

const VirtualMoment& VirtualMoment::movePointer(std::optional<CGPoint> position) const {
    changePicture([position](VirtualScene& scene) { scene.pointer = position; });
    return position ? changeInput([](const VirtualInput& input) { return input.movePointer(); }) : *this;
}

const VirtualMoment& VirtualMoment::setCursor(std::optional<NSCursor> cursor) const {
    return change([cursor = std::move(cursor)](VirtualDesktopState& state) { state.scene.cursor = cursor; });
}

const VirtualMoment& VirtualMoment::putDisplay(const VirtualDisplay& display) const {
    return changePicture([display](VirtualScene& scene) { scene.put(display); });
}

const VirtualMoment& VirtualMoment::removeDisplay(CGDirectDisplayID displayID) const {
    changeScene([displayID](VirtualScene& scene) {
        std::erase_if(scene.panels,
                      [displayID](const VirtualScene::Panel& panel) { return panel.display.displayID == displayID; });
    });
    return stopStreams(displayID, streamError(SCStreamErrorCode::noCaptureSource, "The display is gone."));
}

const VirtualMoment& VirtualMoment::failDisplayList(CGError error) const {
    return change([error](VirtualDesktopState& state) {
        state.conditions.displayListError = error == CGError::success ? std::nullopt : std::optional(error);
    });
}

const VirtualMoment& VirtualMoment::allowScreenCapture(bool allow) const {
    return setAccess(ZVPermission::screenRecording,
                     {.status = allow ? AVAuthorizationStatus::authorized : AVAuthorizationStatus::denied});
}

const VirtualMoment& VirtualMoment::setAccess(ZVPermission permission, const VirtualAccess& access) const {
    return change([=](VirtualDesktopState& state) { state.conditions.access[permission] = access; });
}

const VirtualMoment& VirtualMoment::answerContentRequests(std::vector<VirtualAnswer> answers) const {
    return change([answers = std::move(answers)](VirtualDesktopState& state) {
        state.conditions.contentAnswers.assign(answers.begin(), answers.end());
    });
}

const VirtualMoment& VirtualMoment::failServiceRestart(std::exception_ptr error) const {
    return change([error](VirtualDesktopState& state) { state.conditions.serviceRestartError = error; });
}

const VirtualMoment& VirtualMoment::failStreamStart(std::exception_ptr error) const {
    return change([error](VirtualDesktopState& state) { state.conditions.streamStartError = error; });
}

const VirtualMoment& VirtualMoment::refuseStreamOutput(std::optional<SCStreamOutputType> type) const {
    return change([type](VirtualDesktopState& state) { state.conditions.refusedOutput = type; });
}

const VirtualMoment& VirtualMoment::setStreamClock(std::optional<double> secondsBehind) const {
    const auto offset = secondsBehind ? std::optional(fromSeconds(*secondsBehind)) : std::nullopt;
    return change([offset](VirtualDesktopState& state) { state.conditions.streamClockOffset = offset; });
}

const VirtualMoment& VirtualMoment::holdPictures(CGDirectDisplayID displayID, double seconds) const {
    return change([displayID, until = hostTime_ + fromSeconds(seconds)](VirtualDesktopState& state) {
        state.conditions.picturesHeldUntil[displayID] = until;
    });
}

const VirtualMoment& VirtualMoment::deliver(CGDirectDisplayID displayID, VirtualOddSample kind) const {
    return perform([displayID, kind](VirtualDesktop& desktop) {
        for (const auto& observer : desktop.observers(displayID)) {
            observer->oddSample(kind);
        }
    });
}

const VirtualMoment& VirtualMoment::stopStreams(CGDirectDisplayID displayID, std::exception_ptr error) const {
    return perform([displayID, error](VirtualDesktop& desktop) {
        for (const auto& observer : desktop.observers(displayID)) {
            observer->stopped(error);
        }
    });
}

const VirtualMoment& VirtualMoment::stopStreams(CGDirectDisplayID displayID, SCStreamErrorCode code) const {
    return stopStreams(displayID, streamError(code, "The stream was stopped."));
}

const VirtualMoment& VirtualMoment::playTone(double frequency) const {
    return change([frequency](VirtualDesktopState& state) { state.sound.frequency = frequency; });
}

const VirtualMoment& VirtualMoment::playTone(std::int32_t processID, double frequency) const {
    return change([=](VirtualDesktopState& state) { state.sound.applications[processID] = frequency; });
}

const VirtualMoment& VirtualMoment::interruptSound(std::exception_ptr reason) const {
    return setSoundInterruption(std::move(reason));
}

const VirtualMoment& VirtualMoment::resumeSound() const {
    return setSoundInterruption(nullptr);
}

const VirtualMoment& VirtualMoment::setSoundInterruption(std::exception_ptr reason) const {
    return perform([reason](VirtualDesktop& desktop) {
        desktop.withState([&](VirtualDesktopState& state) { state.sound.isInterrupted = reason != nullptr; });
        for (const SCDisplay& display : displaysOf(desktop)) {
            for (const auto& observer : desktop.observers(display.displayID)) {
                observer->soundInterrupted(reason);
            }
        }
    });
}

const VirtualMoment& VirtualMoment::loseSound(double seconds) const {
    return change([from = hostTime_, until = hostTime_ + fromSeconds(seconds)](VirtualDesktopState& state) {
        state.sound.lostFrom = from;
        state.sound.lostUntil = until;
    });
}

const VirtualMoment& VirtualMoment::shiftSound(double seconds) const {
    return change([shift = VirtualSound::Shift{hostTime_, fromSeconds(seconds)}](VirtualDesktopState& state) {
        state.sound.shifts.push_back(shift);
    });
}

}  // namespace zorvane
