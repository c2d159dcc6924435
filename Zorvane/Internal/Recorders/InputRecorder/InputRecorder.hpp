// Records what the user does with mouse and keyboard to a side file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Internal/AbortSignal.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/Recorders/CursorRecorder/CursorTimeline.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"
#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"

namespace zorvane {

class CGEventStream;
class InputEventProcessor;
struct InputRecorderParameters;

/// Hears the events of the whole session, from `prepare` on, and writes those inside the recording interval, each event
/// of the mouse with the cursor that was on the screen, and each change of the cursor as an event of its own.
///
///     listeners --> CGEventStream --> event loop --> InputEventProcessor --> file
///
/// The stream keeps whatever the loop has not come to, so that nothing blocks the window server. `finish` loses none of
/// it: it has the window server hand over what happened before, lets the loop come to the stream's end, then writes the
/// changes of the cursor that are left, then closes the file.
///
/// Listening that fails or that the system ends, a file that can't be written, and a timeline that stays empty end the
/// recording through the abort handler.
class InputRecorder final : public Recorder {
  public:
    enum class CaptureMode : std::uint8_t {
        mouseEvents,  ///< needs no permission
        keyboardEvents,
        mouseAndKeyboardEvents,
    };

    /// Creates the file. Throws `ZVError` if there is one already or the area is empty, and what the operating system
    /// says.
    explicit InputRecorder(InputRecorderParameters parameters);
    /// Stops to listen; the loop has ended after the event that it was at, and the file is closed as it is.
    ~InputRecorder() override;

    const std::string& id() const override { return id_; }
    Task<> prepare() override;
    Task<> cancel() override;
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override;

  private:
    std::shared_ptr<CGEventStream> makeEventStream() const;

    const std::string id_;
    const Logger logger_;
    const CaptureMode captureMode_;
    const std::string filename_;
    const AbortHandler onAbort_;
    const std::shared_ptr<InputEventProcessor> processor_;  // shared with the loop
    std::weak_ptr<CGEventStream> events_;                   // which the loop owns
    TaskHandle<> eventMonitor_;
};

struct InputRecorderParameters {
    std::string id;
    InputRecorder::CaptureMode capture = InputRecorder::CaptureMode::mouseEvents;
    std::filesystem::path url;
    /// The recorded area in global coordinates, with the origin at the top left of the main display.
    CGRect globalCropTopLeft;
    /// What a `CursorRecorder` beside this one fills.
    std::shared_ptr<const CursorTimeline> cursorTimeline;
    StableRecordingInterval recordingInterval;
    Logger logger;
    AbortHandler onAbort;
};

}  // namespace zorvane
