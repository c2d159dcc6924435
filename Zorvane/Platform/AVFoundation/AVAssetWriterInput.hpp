// One track of a file being written.
#pragma once

#include <atomic>
#include <memory>
#include <variant>

#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane {

/// What a writer's backend does with one input's samples. Called under the rules of `AVAssetWriterInput`.
class AVAssetWriterInputSink {
  public:
    virtual ~AVAssetWriterInputSink() = default;
    virtual bool isReadyForMoreMediaData() const = 0;
    virtual bool append(const CMSampleBuffer& sampleBuffer) = 0;
    virtual void markAsFinished() = 0;
};

/// A track's entry. Made, given to one writer, fed while the writer is writing, marked as finished.
/// Samples come in the order of their times, from one thread at a time; other calls from any thread.
class AVAssetWriterInput {
  public:
    explicit AVAssetWriterInput(AVVideoSettings settings);
    explicit AVAssetWriterInput(AVAudioSettings settings);

    AVMediaType mediaType() const;
    /// Precondition: of this media type.
    const AVVideoSettings& videoSettings() const { return std::get<AVVideoSettings>(settings_); }
    const AVAudioSettings& audioSettings() const { return std::get<AVAudioSettings>(settings_); }

    /// Set before the input is added: media comes as it happens, so the writer must not hold it back for interleaving.
    void setExpectsMediaDataInRealTime(bool expects) { expectsMediaDataInRealTime_ = expects; }
    bool expectsMediaDataInRealTime() const { return expectsMediaDataInRealTime_; }

    /// False while the writer's queue is full, before writing has begun, after it failed and after `markAsFinished`.
    bool isReadyForMoreMediaData() const;

    /// Hands one sample over without blocking. False when it couldn't be taken, which the writer's `error` then
    /// explains. Raises `NSException` when not attached to a writer, or after `markAsFinished`.
    bool append(const CMSampleBuffer& sampleBuffer);

    /// No more samples will come. Calling it again does nothing.
    void markAsFinished();

    /// For writers: binds the input to its backend.
    void attach(std::shared_ptr<AVAssetWriterInputSink> sink);

  private:
    std::variant<AVVideoSettings, AVAudioSettings> settings_;
    bool expectsMediaDataInRealTime_ = false;
    std::shared_ptr<AVAssetWriterInputSink> sink_;  // set once, before writing starts
    std::atomic<bool> finished_{false};
};

}  // namespace zorvane
