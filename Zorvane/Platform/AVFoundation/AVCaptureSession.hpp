// A running capture of devices: of a microphone, a camera, a phone.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"

namespace zorvane {

class AVCaptureDataOutput;
class CMClock;

/// Receives an output's samples, on the queue that it was set with: one at a time, never after `stopRunning` returned.
class AVCaptureDataOutputSampleBufferDelegate {
  public:
    virtual ~AVCaptureDataOutputSampleBufferDelegate() = default;
    virtual void captureOutput(const AVCaptureDataOutput& output, const CMSampleBuffer& sampleBuffer) = 0;
};

/// Where a session's samples of one media type, video or audio, go. Set up before it is added to a session.
class AVCaptureDataOutput {
  public:
    explicit AVCaptureDataOutput(AVMediaType mediaType, DispatchQueue queue)
        : mediaType_(mediaType), queue_(std::move(queue)) {}

    AVMediaType mediaType() const { return mediaType_; }

    void setSampleBufferDelegate(std::weak_ptr<AVCaptureDataOutputSampleBufferDelegate> delegate) {
        delegate_ = std::move(delegate);
    }
    const std::weak_ptr<AVCaptureDataOutputSampleBufferDelegate>& sampleBufferDelegate() const { return delegate_; }
    const DispatchQueue& queue() const { return queue_; }

    /// The layout of the pictures that are wanted; without one it is the session's choice. Of video only.
    void setPixelFormat(CVPixelFormat format) { pixelFormat_ = format; }
    const std::optional<CVPixelFormat>& pixelFormat() const { return pixelFormat_; }

    /// Whether a picture that the queue hasn't come to when the next one is there is dropped, as it is at first. Of
    /// video only: sound is never dropped.
    void setAlwaysDiscardsLateVideoFrames(bool discards) { discardsLateVideoFrames_ = discards; }
    bool alwaysDiscardsLateVideoFrames() const { return discardsLateVideoFrames_; }

  private:
    const AVMediaType mediaType_;
    const DispatchQueue queue_;
    std::weak_ptr<AVCaptureDataOutputSampleBufferDelegate> delegate_;
    std::optional<CVPixelFormat> pixelFormat_;
    bool discardsLateVideoFrames_ = true;
};

/// Made, given inputs and outputs, started, stopped; not started again. Destroying a running session stops it. Any
/// thread may call, but not inside a sample handler of its own; calls of one session come one at a time.
///
/// Sound: blocks of interleaved PCM in the device's own rate and channel count, on the host clock. Each block begins
/// where the last one ended, unless sound got lost: then its time says how much.
///
/// Pictures: '420v' of the device's size, each with the time at which it was taken, on the same clock as the sound and
/// later than the one before. The size may change in the middle; a picture's own layout and format description tell it.
/// Only few are out at a time, but at least four: while the receiver holds them all, new ones are dropped.
///
/// A session takes one device for each media type; a muxed one gives both. A device that goes away in the middle of the
/// capture leaves it running without its samples, and is taken up again when it comes back; no other device ever takes
/// its place.
class AVCaptureSession {
  public:
    /// Which input it is about, by its device's media type: video, audio or muxed. Null: the device delivers again;
    /// else why it doesn't.
    using InterruptionHandler = std::function<void(AVMediaType input, std::exception_ptr reason)>;

    virtual ~AVCaptureSession() = default;

    virtual bool canAddInput(const AVCaptureDeviceInput& input) const = 0;
    virtual void addInput(AVCaptureDeviceInput input) = 0;
    /// Whether an input has samples of this media type, and no other output takes them.
    virtual bool canAddOutput(const AVCaptureDataOutput& output) const = 0;
    virtual void addOutput(std::shared_ptr<AVCaptureDataOutput> output) = 0;
    /// Whether the output of this media type gets samples.
    virtual bool hasEnabledConnection(AVMediaType mediaType) const = 0;

    /// Begins to deliver, now or when a device is ready; a device that never is shows by samples that don't come.
    virtual void startRunning() = 0;
    /// After it no sample is delivered. Does nothing if the session isn't running.
    virtual void stopRunning() = 0;

    /// The clock of the samples' times; null when they have none that can be brought to the host clock. Constant once
    /// the session is running.
    virtual const CMClock* synchronizationClock() const = 0;

    /// Calls `handler` on any thread, but no sample handler's queue, whenever a running session loses a device and when
    /// it has it back.
    virtual NSKeyValueObservation observeInterruptions(InterruptionHandler handler) = 0;
};

}  // namespace zorvane
