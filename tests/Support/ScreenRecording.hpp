// One screen recorder on a scripted desktop, driven through its life as a conductor would.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Internal/Recorders/ScreenRecorder.hpp"
#include "tests/Support/AbortSignals.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane::testing {

struct ScreenRecordingOptions {
    bool captureAudio = false;
    std::optional<CGRect> cropRect;
    RecordMode mode = RecordMode::sRGB;
    OutputDescription output{OutputDescription::SingleFile{"/bundle/display-77.mov"}};
};

class ScreenRecordingTest : public VirtualWorldTest {
  protected:
    using Assets = std::vector<ZVBundleInfo::FileAsset>;

    void makeRecorder(const ScreenRecordingOptions& options = {}) {
        const SCDisplay display{.displayID = 1, .frame = CGRect::make(0, 0, 320, 200)};
        ScreenRecorderParameters parameters{
            .id = "item1",
            .outputDescription = options.output,
            .content = {.filter = {.display = display}, .display = display, .cropRect = options.cropRect},
            .captureAudio = options.captureAudio,
            .mode = options.mode,
            .recordingInterval = StableRecordingInterval(interval),
            .logger = log.logger<ScreenRecordingTest>(),
            .onAbort = abortSignals.handler(),
        };
        recorder = std::make_shared<ScreenRecorder>(std::move(parameters));
    }
    void prepare() { clock->complete(recorder->prepare()); }
    void start() { interval->start(hostSeconds(secondsNow())); }
    Assets stop() {
        interval->stop(hostSeconds(secondsNow()));
        return clock->complete(recorder->finish());
    }

    VirtualMovie movie() const { return writing->writers().at(0)->movie(); }

    /// The times of a track's samples, in seconds since the session's start.
    std::vector<double> sampleTimes(std::size_t track = 0) const {
        const VirtualMovie written = movie();
        std::vector<double> times;
        for (const VirtualSampleRecord& sample : written.tracks.at(track).samples) {
            times.push_back((sample.presentationTimeStamp - written.sessionStart.value()).seconds());
        }
        return times;
    }

    std::vector<std::string> signals() const { return abortSignals.seen(); }

    const std::shared_ptr<VolatileRecordingInterval> interval = std::make_shared<VolatileRecordingInterval>();
    LogCapture log;
    AbortSignals abortSignals;
    std::shared_ptr<ScreenRecorder> recorder;
};

}  // namespace zorvane::testing
