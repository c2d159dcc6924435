// One recorder of input on a scripted desktop, with a timeline of cursors that the test fills.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Zorvane/Internal/Recorders/CursorRecorder/CursorTimeline.hpp"
#include "Zorvane/Internal/Recorders/InputRecorder/InputRecorder.hpp"
#include "tests/Support/InputEventText.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane::testing {

/// Seconds are those since the desktop was made. The recorded area is the display, 320 by 200 points.
class InputRecordingTest : public VirtualWorldTest {
  protected:
    using Mode = InputRecorder::CaptureMode;

    InputRecordingTest() {
        timeline->queue().syncBarrier([this] {
            timeline->preload({cursor(ZVCursorType::arrow), cursor(ZVCursorType::iBeam)});
        });
    }

    /// Notes which cursor is on the screen, as a `CursorRecorder` would.
    void look(double seconds, ZVCursorType type, const CGPoint& location = {}) const {
        CGEvent pointer;
        pointer.location = location;
        const Cursor shown = cursor(type);
        const NSCursor image{shown.shape.hotspot, shown.shape.size,
                             std::make_shared<const std::string>(shown.tiffRepresentation)};
        const CMTime time = CMTime::fromSeconds(hostSeconds(seconds), 1'000'000'000);
        timeline->queue().syncBarrier([&] { timeline->capture(image, time, pointer); });
    }
    /// For tests in which the cursor is of no interest.
    void keepArrow() const {
        look(0, ZVCursorType::arrow);
        look(1000, ZVCursorType::arrow);
    }

    void prepare(Mode mode = Mode::mouseAndKeyboardEvents, const CGRect& crop = CGRect::make(0, 0, 320, 200)) {
        recorder = std::make_shared<InputRecorder>(InputRecorderParameters{
            .id = "item1",
            .capture = mode,
            .url = sideFile,
            .globalCropTopLeft = crop,
            .cursorTimeline = timeline,
            .recordingInterval = StableRecordingInterval(interval),
            .logger = log.logger<InputRecordingTest>(),
            .onAbort = [this](const AbortSignal& signal) { noteSignal(signal); },
        });
        clock->complete(recorder->prepare());
    }
    void startAt(double seconds) { interval->start(hostSeconds(seconds)); }
    /// Lets time go on to the stop and a bit further, and gives the side file's lines.
    std::vector<std::string> stopAt(double seconds) {
        interval->stop(hostSeconds(seconds));
        advance(seconds + 0.001 - secondsNow());
        assets = clock->complete(recorder->finish());
        return textOfFile(sideFile);
    }

    /// "debug description | text for the user" of each abort so far.
    std::vector<std::string> aborts() const {
        const std::lock_guard lock(mutex);
        return seenAborts;
    }
    void forgetAborts() {
        const std::lock_guard lock(mutex);
        seenAborts.clear();
    }

    const TemporaryDirectory directory;
    const std::filesystem::path sideFile = directory.path() / "screen.input-events.json";
    const std::shared_ptr<CursorTimeline> timeline = std::make_shared<CursorTimeline>();
    const std::shared_ptr<VolatileRecordingInterval> interval = std::make_shared<VolatileRecordingInterval>();
    LogCapture log;
    std::shared_ptr<InputRecorder> recorder;
    std::vector<ZVBundleInfo::FileAsset> assets;

  private:
    static Cursor cursor(ZVCursorType type) {
        Cursor cursor(Cursor::Shape{{static_cast<double>(type), 1}, {16, 16}}, std::string(rawValue(type)));
        cursor.id = rawValue(type);
        cursor.type = type;
        return cursor;
    }

    void noteSignal(const AbortSignal& signal) {
        const std::lock_guard lock(mutex);
        seenAborts.push_back(debugDescription(signal.error()) + " | " + localizedDescription(signal.error()));
    }

    mutable std::mutex mutex;
    std::vector<std::string> seenAborts;
};

}  // namespace zorvane::testing
