// Encodes samples and writes them to a media file.
#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVAssetWriterInput.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

enum class AVFileType : std::uint8_t { quickTimeMovie, mpeg4, appleM4A };

/// A writer's life:
///
///     unknown --startWriting--> writing --finishWriting--> completed
///        |                         |
///        +-------------------------+--- an error ---> failed
///
/// While writing, one session is opened with `startSession` and closed with `endSession`; it clips the media exactly:
/// the file begins at the session's start and ends at its end, whatever was appended. This class owns the states and
/// the rules; a backend fills in the hooks. A call that the state forbids raises `NSException`, since it is the
/// caller's mistake; trouble with the media or the disk is an `error`. Any thread may call.
class AVAssetWriter {
  public:
    enum class Status : std::uint8_t { unknown, writing, completed, failed };

    /// Called with the error, on any thread, when one arises. Keep the token as long as the calls are wanted; after
    /// it is gone no call begins.
    using ErrorObserver = std::function<void(std::exception_ptr error)>;
    using ErrorObservation = std::shared_ptr<void>;
    using Completion = std::function<void()>;

    AVAssetWriter(const AVAssetWriter&) = delete;
    AVAssetWriter& operator=(const AVAssetWriter&) = delete;
    virtual ~AVAssetWriter() = default;

    const std::filesystem::path& outputURL() const { return outputURL_; }
    Status status() const;
    /// Null unless `failed`. The first error is kept.
    std::exception_ptr error() const;
    [[nodiscard]] ErrorObservation observeError(ErrorObserver observer);

    /// Whether the backend can encode such a track into this file. Before `startWriting`.
    bool canAdd(const AVAssetWriterInput& input) const;
    void add(const std::shared_ptr<AVAssetWriterInput>& input);
    bool hasInputs() const;

    /// Creates the file and makes the encoders ready. False when that failed, see `error`.
    bool startWriting();

    /// Opens the session: media before `time` is clipped. Opening it again does nothing, since the tracks of one file
    /// each open it.
    void startSession(CMTime time);

    /// Closes the session: media at or after `time` is clipped, and the last picture lasts until `time`. Closing it
    /// again does nothing.
    void endSession(CMTime time);

    /// Drains the encoders and finalises the file off the caller's thread; then the status is `completed` or `failed`
    /// and `completion` is called once, on any thread. Without a session end, the file ends with its last sample.
    void finishWriting(Completion completion);

  protected:
    explicit AVAssetWriter(std::filesystem::path outputURL) : outputURL_(std::move(outputURL)) {}

    /// For backends: records the first error, makes the writer `failed` and tells the observers. Any thread; the
    /// caller holds no lock that an observer could need.
    void fail(std::exception_ptr error);

  private:
    // The hooks; each is called in the states that the public call allows, one call at a time.
    virtual bool canAddInput(const AVAssetWriterInput& input) const = 0;
    virtual std::shared_ptr<AVAssetWriterInputSink> addInput(const AVAssetWriterInput& input) = 0;
    /// Throws what made it impossible.
    virtual void doStartWriting() = 0;
    virtual void doStartSession(CMTime time) = 0;
    virtual void doEndSession(CMTime time) = 0;
    /// `done` is called once, with null or with the error that spoilt the file.
    virtual void doFinishWriting(std::function<void(std::exception_ptr)> done) = 0;

    struct Observer;
    enum class Session : std::uint8_t { none, open, ended };

    void requireWriting(const char* operation) const;  // mutex_ held
    void finished(std::exception_ptr error, const Completion& completion);

    const std::filesystem::path outputURL_;
    mutable std::mutex mutex_;
    Status status_ = Status::unknown;  // guarded by mutex_, as all below
    Session session_ = Session::none;
    bool finishing_ = false;
    std::exception_ptr error_;
    std::vector<std::shared_ptr<AVAssetWriterInput>> inputs_;
    std::vector<std::weak_ptr<Observer>> observers_;
};

}  // namespace zorvane
