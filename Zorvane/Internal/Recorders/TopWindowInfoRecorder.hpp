// Records which window was in front, and where, into a side file.
#pragma once

#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/RecordingIntervalBoundedRetimer.hpp"
#include "Zorvane/Internal/StreamingJSONWriter.hpp"
#include "Zorvane/Internal/TopWindowTracker.hpp"

namespace zorvane {

/// The file holds a `ZVWindowPresence` for every change. The first one tells, at time 0, of the window that was in
/// front when the recording started; the last one repeats, at the time of the stop, what was in front then. A window
/// that lies outside the recorded area altogether gives no element: what was written before stands.
class TopWindowInfoRecorder final : public Recorder {
  public:
    /// Creates the file. `displayID` is the window server's number; `globalCropTopLeft` is the recorded area in global
    /// coordinates, with the origin at the top left. Throws `ZVError` for an empty one, and what `StreamingJSONWriter`
    /// throws.
    TopWindowInfoRecorder(std::string id, const std::filesystem::path& url, CGDirectDisplayID displayID,
                          const CGRect& globalCropTopLeft, const RecorderContext& context);
    ~TopWindowInfoRecorder() override;

    const std::string& id() const override { return id_; }
    /// Ends when it is known which window is in front.
    Task<> prepare() override;
    Task<> cancel() override;
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override;

  private:
    Task<> monitor(Continuation<> began);
    void noteEnd(const std::exception_ptr& error);
    Task<> endMonitoring();
    void append(const TopWindowTracker::Update& update);
    void process(const TopWindowTracker::Update& update, CMTime cmTime);

    const std::string id_;
    const Logger logger_;
    const std::filesystem::path outputURL_;
    const CGDirectDisplayID displayID_;
    const CGRect crop_;
    StreamingJSONWriter writer_;
    const AbortHandler onAbort_;
    TaskHandle<> eventMonitor_;
    RecordingIntervalBoundedRetimer<TopWindowTracker::Update> retimer_;
};

}  // namespace zorvane
