// The one object a host holds for one recording.
#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Zorvane/Sources/ZVAppleDevice.hpp"
#include "Zorvane/Sources/ZVCamera.hpp"
#include "Zorvane/Sources/ZVDisplay.hpp"
#include "Zorvane/Sources/ZVMicrophone.hpp"
#include "Zorvane/Sources/ZVRunningApplication.hpp"
#include "Zorvane/Sources/ZVWindow.hpp"
#include "Zorvane/ZVBundleInfo.hpp"
#include "Zorvane/ZVError.hpp"
#include "Zorvane/ZVRecordingNotice.hpp"
#include "Zorvane/ZVSchemaItem.hpp"
#include "Zorvane/ZVSoundLevel.hpp"
#include "Zorvane/ZVTask.hpp"

namespace zorvane {

/// Records a schema's sources into one bundle, whose files all begin and end at the same instant.
///
/// A recorder records once. Its life:
///
///     ZVRecorder recorder({ZVRecorder::SchemaItem::display(displayID)});
///     recorder.prepare().get();                           // sources run, nothing is kept yet
///     recorder.start().get();                             // this instant is 0 in every file
///     std::this_thread::sleep_for(10s);
///     ZVRecorder::Result result = recorder.stop().get();  // this instant is the end of every file
///     std::cout << result.bundleURL << '\n';              // media, side files and "zorvane.json"
///
/// `prepare` may take seconds, until every source delivers; `start` takes microseconds, so a host that must hit a
/// moment prepares ahead. `start` alone prepares first.
///
///     initial ── prepare ──> prepared ── start ──> recording ── stop or abort ──> ended
///        │                      └── stop or abort: the bundle directory is emptied ──^
///        └── preparation fails, or stop: final, the same error again from then on
///
/// A recording also ends by itself when a source is lost or the user ends the capture in the desktop: its files are
/// closed cleanly, and the abort handler hears of it.
///
/// Threads: every operation may be called on any thread, at any time, several at once; a call that finds another one at
/// work waits for it and then decides anew. Each operation returns a task, which does nothing until it is awaited,
/// blocked on (`get`) or started (`start`), and keeps alive what it needs.
///
/// Destroying a recorder stops nothing in an orderly way: its sources end, and a recording under way is lost but for
/// what its files can save of themselves. Stop it first.
class ZVRecorder {
  public:
    using Schema = ZVSchema;
    using SchemaItem = ZVSchemaItem;
    using ScreenRecordingExcludeOptions = ZVScreenRecordingExcludeOptions;
    using SystemAudioExcludeOptions = ZVSystemAudioExcludeOptions;
    using DisplayOptions = ZVDisplayOptions;
    using WindowBasedCropOptions = ZVWindowBasedCropOptions;
    using ScreenRecordingOutputOptions = ZVScreenRecordingOutputOptions;
    using WebcamOutputOptions = ZVWebcamOutputOptions;
    using AudioOutputOptions = ZVAudioOutputOptions;
    using DeviceOutputOptions = ZVDeviceOutputOptions;
    using Notice = ZVRecordingNotice;
    using SoundLevel = ZVSoundLevel;

    /// What a recording does beside recording.
    struct Settings {
        /// Kept; no source makes use of it.
        bool allowFrameReordering = true;
        /// Whether a successful start makes the schema's sources the user's preferred ones, which are remembered over
        /// recordings and programs: on Linux in "zorvane/preferences.json" below the user's configuration directory.
        /// They are written behind the start; what can't be written leaves a warning in the log.
        bool updatesUserPreferred = true;
    };

    /// A finished recording.
    struct Result {
        /// The bundle directory.
        std::filesystem::path bundleURL;
        /// What its manifest holds. Empty for a recording that never started.
        ZVBundleInfo bundleInfo;

        bool operator==(const Result&) const = default;
    };

    class AbortReason;
    class PartialResultError;
    struct Statistics;

    /// Hears why a recording ended by itself, once. Runs on the recorder's own executor; it must not block, nor wait
    /// for an operation of this recorder.
    using OnAbort = std::function<void(const AbortReason& reason)>;

    /// Hears of trouble that the recording survives, and of its end: a microphone that is unplugged and comes back.
    /// Runs on the recorder's own executor, one call at a time, in the order of the events, from preparation on; it
    /// must not block, nor wait for an operation of this recorder. What it throws is logged.
    using OnNotice = std::function<void(const Notice& notice)>;

    /// Never throws for what the schema says, and touches no file. Without an output directory the bundle is a new
    /// directory in the system's temporary directory. Without an abort handler an abort leaves a warning in the log.
    explicit ZVRecorder(std::vector<SchemaItem> items,
                        std::optional<std::filesystem::path> outputDirectory = std::nullopt,
                        std::optional<Settings> settings = std::nullopt, OnAbort onAbort = nullptr);
    ~ZVRecorder();
    /// A recorder that was moved from can only be destroyed or assigned to.
    ZVRecorder(ZVRecorder&&) noexcept;
    ZVRecorder& operator=(ZVRecorder&&) noexcept;

    /// Five letters and digits that name the recording in logs and in the name of a directory of its own.
    const std::string& id() const;
    const Schema& schema() const;
    const Settings& settings() const;
    /// The bundle directory. It exists once preparation has begun.
    const std::filesystem::path& bundleURL() const;

    /// Replaces the abort handler. Throws a `ZVError` (bad operation) once preparation has begun.
    ZVTask<> setAbortHander(OnAbort handler);

    /// Replaces the notice handler, at any time; null ends the notices. Without one they leave warnings in the log
    /// only.
    ZVTask<> setNoticeHandler(OnNotice handler);

    /// Creates the bundle directory and starts all sources; ends when all of them deliver. Throws the first error of a
    /// source, a `ZVError` (invalid configuration) if the directory exists, or what the system says of it; from then on
    /// the recorder is of no use and its directory stays as it is. Does nothing if prepared already.
    ZVTask<> prepare();

    /// Fixes the beginning of all files to the moment at which it runs, after preparing if that was not done. Throws as
    /// `prepare` does, and a `ZVError` (bad operation) if the recording has ended. Does nothing if recording already.
    ZVTask<> start();

    /// Fixes the end of all files to the moment at which it runs and closes them. Throws nothing but
    /// `PartialResultError`, which holds what could be saved. Called again, it gives the same outcome again. A recorder
    /// that was prepared but not started is left with an empty directory and an empty result; its sources run until it
    /// is destroyed. One that was not even prepared throws, and is of no more use.
    ZVTask<Result> stop();

    /// How the recording is going. Any thread, at any time; takes microseconds.
    Statistics statistics() const;

    /// "ZVRecorder: 2 recorder items", for two schema items.
    std::string debugDescription() const;

    // What the types of the sources list themselves.
    [[deprecated("Use ZVDisplay::displays().")]] static ZVDisplay::List getDisplays();
    [[deprecated("Use ZVCamera::cameras().")]] static ZVCamera::List getCameras();
    [[deprecated("Use ZVMicrophone::microphones().")]] static ZVMicrophone::List getMicrophones();
    [[deprecated("Use ZVAppleDevice::appleDevices().")]] static ZVTask<ZVAppleDevice::List> getAppleDevices();
    [[deprecated("Use ZVWindow::windows().")]] static ZVWindow::List getWindows(ZVWindow::FilterOptions options);
    [[deprecated("Use ZVRunningApplication::applications().")]] static ZVRunningApplication::List getApplications();

  private:
    struct Implementation;

    std::shared_ptr<const Implementation> implementation_;
};

/// Why a recording ended by itself. The result lists the files that could be saved.
class ZVRecorder::AbortReason {
  public:
    enum class Kind {
        userStopped,  ///< the user ended the capture in the desktop; all files were closed cleanly
        interrupted,  ///< a source failed; all files were closed cleanly
        failed,       ///< a file or the manifest could not be closed
    };

    static AbortReason userStopped(Result result) { return {Kind::userStopped, std::move(result), nullptr}; }
    static AbortReason interrupted(Result result, std::exception_ptr error) {
        return {Kind::interrupted, std::move(result), std::move(error)};
    }
    static AbortReason failed(Result result, std::exception_ptr error) {
        return {Kind::failed, std::move(result), std::move(error)};
    }

    Kind kind() const { return kind_; }
    const Result& result() const { return result_; }
    /// The source's error if interrupted, a `GroupedErrors` if failed, null if stopped by the user.
    const std::exception_ptr& error() const { return error_; }

    /// "userStopped", "interrupted: " or "failed: " and the error's description.
    std::string logErrorDescription() const;

  private:
    AbortReason(Kind kind, Result result, std::exception_ptr error)
        : kind_(kind), result_(std::move(result)), error_(std::move(error)) {}

    Kind kind_;
    Result result_;
    std::exception_ptr error_;
};

/// What went wrong while a recording was closed, together with what could be saved. Its texts are those of its errors.
class ZVRecorder::PartialResultError : public ZVDescribedError {
  public:
    PartialResultError(Result result, GroupedErrors groupedErrors);

    const Result& result() const { return *result_; }
    const GroupedErrors& groupedErrors() const { return groupedErrors_; }

  private:
    std::shared_ptr<const Result> result_;
    GroupedErrors groupedErrors_;
};

/// The recording so far. Times are seconds on the host clock (`CLOCK_MONOTONIC`), infinity while unset; frames are
/// pictures, summed over all sources.
struct ZVRecorder::Statistics {
    double recordFrom = std::numeric_limits<double>::infinity();
    double recordUntil = std::numeric_limits<double>::infinity();
    /// Pictures that reached a file.
    std::uint64_t framesWritten = 0;
    /// Pictures lost because the encoder was busy.
    std::uint64_t framesDropped = 0;
    /// Pictures written again because the screen stood still.
    std::uint64_t framesRepeated = 0;
    /// How loud each source of sound is, in the order of the schema, from preparation on.
    std::vector<SoundLevel> soundLevels;
};

}  // namespace zorvane
