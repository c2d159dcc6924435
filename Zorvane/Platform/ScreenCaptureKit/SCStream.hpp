// A running capture of a display: its configuration, its samples and its end.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane {

class CMClock;
class DispatchQueue;
class SCStream;

enum class SCStreamOutputType : std::uint8_t { screen, audio };

/// What a screen sample's `frameStatus` attachment holds.
enum class SCFrameStatus : std::int32_t { complete = 0, idle = 1, blank = 2, suspended = 3, started = 4, stopped = 5 };

/// The domain of a stream's `NSError`s, and the codes that callers tell apart.
inline constexpr const char* SCStreamErrorDomain = "SCStreamErrorDomain";
enum class SCStreamErrorCode : std::int32_t {
    userDeclined = -3801,
    failedToStart = -3802,
    missingEntitlements = -3803,
    internalError = -3811,
    attemptToStartStreamState = -3807,
    attemptToStopStreamState = -3808,
    noDisplayList = -3814,
    noCaptureSource = -3815,
    userStopped = -3817,
    systemStoppedStream = -3821,
};

/// An `NSError` of that domain.
std::exception_ptr makeStreamError(SCStreamErrorCode code, std::string localizedDescription);

/// How a stream captures. A plain value; a stream takes a copy when it is made.
struct SCStreamConfiguration {
    bool showsCursor = true;
    bool capturesAudio = false;
    /// Leaves this process's sound out, beside what the filter leaves out.
    bool excludesCurrentProcessAudio = false;
    double sampleRate = 48000;         ///< of the delivered sound, frames per second
    std::uint32_t channelCount = 2;    ///< of the delivered sound
    std::size_t queueDepth = 3;        ///< pictures in the pool: the stream never has more of them out
    std::optional<CGRect> sourceRect;  ///< points, relative to the display's origin; the whole display if absent
    std::int32_t width = 0;            ///< pixels of the delivered pictures
    std::int32_t height = 0;
    /// A backend whose screen has less delivers what it has, says so in each picture's layout, and the writer
    /// converts: an 8-bit screen gives BGRA in sRGB also when more is asked for.
    CVPixelFormat pixelFormat = CVPixelFormat::bgra;
    CGColorSpaceName colorSpaceName = CGColorSpaceName::sRGB;
    /// A burst of changes yields no more pictures than one per interval. One that is read late may hold to the
    /// interval's grid: the next then follows sooner, by less than half an interval.
    CMTime minimumFrameInterval = CMTime::make(1, 60);

    std::string debugDescription() const;
};

/// Receives samples, on the queue that it was added with: one at a time per queue, never after `stopCapture` completed.
class SCStreamOutput {
  public:
    virtual ~SCStreamOutput() = default;
    virtual void stream(SCStream& stream, const CMSampleBuffer& sampleBuffer, SCStreamOutputType type) = 0;
};

/// Hears of what nobody asked for.
class SCStreamDelegate {
  public:
    virtual ~SCStreamDelegate() = default;
    /// The stream's end; on any thread, at most once per stream. `error` may be null.
    virtual void streamDidStopWithError(SCStream& stream, std::exception_ptr error) = 0;

    /// The stream goes on, but gives no sound until further notice, for this reason; then it gives sound again. On any
    /// thread but a sample handler's.
    virtual void streamDidBecomeInactive(SCStream&, std::exception_ptr) {}
    virtual void streamDidBecomeActive(SCStream&) {}
};

/// A stream's life: made, outputs added, started, samples flow, stopped (by `stopCapture` or with an error told to
/// the delegate). A stopped stream is not started again. Destroying a running stream stops it without a word; after
/// destruction no callback runs.
///
/// Screen samples: a picture with status `complete` stamped with the time at which it was read, on the clock that
/// `synchronizationClock` tells; and notices without a picture, such as one `idle` when the screen falls still. Without
/// a screen output no picture is taken, which costs nothing.
///
/// Audio samples: interleaved float sound in the configuration's rate and channels, of the applications that the filter
/// lets through: of all, with the filter kinds by window; of those that stay, with the kinds by application; of the
/// subject's, with a subject. Each begins where the last one ended, unless sound got lost. They come also while nothing
/// plays. Their times have the sample rate as timescale.
class SCStream {
  public:
    /// Null error: it worked. Called exactly once, on any thread, possibly before the operation returns.
    using Completion = std::function<void(std::exception_ptr error)>;

    virtual ~SCStream() = default;

    /// Sends the samples of `type` to `output` through `queue`. Before `startCapture`, once per type. The stream holds
    /// the output weakly, and enters the queue from a thread of its own with a synchronous block, without allocating.
    /// Throws `NSError` when the stream can't give samples of this type.
    virtual void addStreamOutput(std::weak_ptr<SCStreamOutput> output, SCStreamOutputType type,
                                 DispatchQueue sampleHandlerQueue) = 0;

    virtual void startCapture(Completion completion) = 0;

    /// After the completion no sample is delivered. A stream that isn't running completes with the code
    /// `attemptToStopStreamState`. May be called from any thread but a sample handler's.
    virtual void stopCapture(Completion completion) = 0;

    /// The clock of the samples' times; null when they have none that can be brought to the host clock.
    virtual const CMClock* synchronizationClock() const = 0;
};

}  // namespace zorvane
