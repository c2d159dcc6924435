// The life of one recording: prepares all recorders, fixes one start and one stop for them, finishes them.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/BundleDirectory.hpp"
#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/ConductorState.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Internal/SourceNotices.hpp"
#include "Zorvane/ZVRecorder.hpp"

namespace zorvane {

/// A serialised object: its operations run one at a time on a strand of its own and interleave where they suspend. Each
/// decides by the state (`ConductorState` shows them all). One that finds another at work waits for the next change of
/// the state and decides anew.
///
/// No recorder is ever told to start. All of them capture from their preparation on; `start` and `stop` write one clock
/// reading each into the interval that the recorders share, and each recorder clips its media to it.
///
/// A repeated call after the end gives the stored outcome and does no work again. The caller keeps the conductor alive
/// while a task of it runs. `traceID` is a new short random identifier for each call and stands in all its log lines.
///
/// When the conductor goes, so do the recorders. It may go in any state, and on any thread but a recorder's own.
class Conductor : public std::enable_shared_from_this<Conductor> {
  public:
    /// Chooses the bundle directory and touches no file. `id` names the recording.
    static std::shared_ptr<Conductor> make(const std::string& id, ZVRecorder::Schema schema, const Logger& logger,
                                           ZVRecorder::OnAbort onAbort);

    const BundleDirectory& bundle() const { return bundle_; }

    /// Throws once preparation has begun.
    Task<> setOnAbort(ZVRecorder::OnAbort handler);
    /// In any state. An empty handler ends the notices.
    Task<> setOnNotice(ZVRecorder::OnNotice handler);

    /// Creates the directory, expands the schema, and prepares all recorders at once. After a failure the directory and
    /// the recorders made so far stay.
    Task<> prepare(std::string traceID);

    /// Stamps the start, after preparing if that has not been done.
    Task<> start(std::string traceID);

    /// Stamps the stop, finishes all recorders at once, and writes the manifest, also after errors. What was only
    /// prepared is discarded. Throws nothing but `ZVRecorder::PartialResultError`; cancellation is ignored, because a
    /// recording is closed whole.
    Task<ZVRecorder::Result> stop(std::string traceID);

    /// Any thread.
    ZVRecorder::Statistics statistics() const;

  private:
    using Case = ConductorState::Case;

    Conductor(const std::string& id, ZVRecorder::Schema schema, const Logger& logger, ZVRecorder::OnAbort onAbort);

    // Everything below but `recorders` runs on the executor.

    Task<> replaceOnAbort(ZVRecorder::OnAbort handler);
    Task<> replaceOnNotice(ZVRecorder::OnNotice handler);

    Task<> decidePrepare(std::string traceID);
    Task<> runPreparation(Logger logger);
    Task<> makeRecordersCapture(Logger logger);
    void createBundleDirectory(const Logger& logger);
    Task<> expandSchema(const Logger& logger);
    AbortHandler makeAbortHandler();
    NoticeHandler makeNoticeHandler();
    void tellHost(const ZVRecorder::Notice& notice);

    Task<> decideStart(std::string traceID);
    void stampStart(const Logger& logger);

    Task<ZVRecorder::Result> decideStop(std::string traceID);
    Task<ZVRecorder::Result> finishRecording(Logger logger);
    void writeManifest(const ZVRecorder::Result& result, std::vector<std::exception_ptr>& errors, const Logger& logger);
    ZVRecorder::Result discardRecording();
    ZVRecorder::Result outcomeOfEnded(const Logger& logger);
    ZVRecorder::Result outcomeOfAborted(const ZVRecorder::AbortReason& reason, const Logger& logger);
    [[noreturn]] void failStop(ZVRecorder::PartialResultError error);
    ZVRecorder::Result emptyResult() const;

    static Task<> abortOwned(std::shared_ptr<Conductor> conductor, AbortSignal signal);
    /// Ends the recording on behalf of a recorder and tells the host. Never throws.
    Task<> abort(AbortSignal signal, std::string traceID);
    void tellHost(const ZVRecorder::AbortReason& reason, const Logger& logger);

    Logger traced(const std::string& traceID) const;
    /// Has every waiter decide anew, also if the new state is no different.
    void setState(ConductorState::Value state);
    /// Waits for the next `setState`.
    Waiter<> stateDidChange();
    Recorders recorders() const;

    const ZVRecorder::Schema schema_;
    const BundleDirectory bundle_;
    const Logger logger_;
    const std::shared_ptr<VolatileRecordingInterval> recordingInterval_;
    const std::shared_ptr<Executor> executor_;

    // Of the executor.
    ZVRecorder::OnAbort onAbort_;
    ZVRecorder::OnNotice onNotice_;
    ConductorState state_;
    std::vector<Continuation<>> stateChangedContinuations_;

    mutable std::mutex recordersMutex_;
    Recorders recorders_;  // guarded by recordersMutex_; empty until the schema is expanded, then never changes
};

}  // namespace zorvane
