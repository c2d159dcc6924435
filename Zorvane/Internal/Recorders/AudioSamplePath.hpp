// The way of a sound sample from its source to the file or the host, the same for all recorders.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "Zorvane/Internal/AudioGapFiller.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/PrepareRingBufferAdaptor.hpp"
#include "Zorvane/Internal/Recorders/AudioSampleSink.hpp"
#include "Zorvane/Internal/Recorders/HostTimePlacement.hpp"
#include "Zorvane/Internal/Recorders/RecordingEndWatch.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Internal/SoundMeter.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {

/// How a recorder speaks of its path, and how patient it is.
struct AudioSamplePathTraits {
    enum class StartMessage : std::uint8_t { none, trace, debug };

    std::string_view activity = "recording";         ///< in the log
    StartMessage startMessage = StartMessage::none;  ///< how the log hears of the first sample of the recording
    std::chrono::nanoseconds flushInterval = std::chrono::milliseconds(100);  ///< between two looks of `flush`
    std::chrono::nanoseconds flushTolerance = std::chrono::milliseconds(1);
};

/// Samples are brought to the host clock; gaps are filled with silence; before the recording's start the newest samples
/// are held; the first sample inside the interval begins the sink at `recordFrom` and replays what is held; from then
/// on samples go to the sink, in order. Until the path is connected to a sink, the newest samples are held.
///
/// `process` and `connect` come on one thread at a time, the rest on any; `flush` once the path is connected.
class AudioSamplePath {
  public:
    AudioSamplePath(const StableRecordingInterval& interval, const Logger& logger, const AudioSamplePathTraits& traits);

    /// Where the samples go from now on. Once.
    void connect(std::unique_ptr<AudioSampleSink> sink) { sink_ = std::move(sink); }

    /// Takes one sample of the source, whose clock is null if it has none.
    void process(const CMSampleBuffer& sampleBuffer, const CMClock* clock);

    /// Ends with the first sample, or throws `error` after `timeout` seconds without one.
    Task<> waitForSample(double timeout, ZVError error) const;

    /// Waits for the sound up to `recordUntil`; see `RecordingEndWatch`.
    Task<> waitForEnd() const;

    /// Hands over what the sink still holds, looking again while it isn't taken. Throws the sink's error, and
    /// `ZVCancelled`.
    Task<> flush() const;

    /// How loud the source is.
    SoundMeter::Level level() const { return meter_.level(); }

  private:
    AudioGapFiller::Samples fillGap(const CMSampleBuffer& sampleBuffer);
    void handle(const CMSampleBuffer& sampleBuffer);
    void keep(const CMSampleBuffer& sampleBuffer);
    void start(CMTime firstSampleTime);
    void noteEnd(const CMSampleBuffer& sampleBuffer);

    const Logger logger_;
    const AudioSamplePathTraits traits_;
    std::unique_ptr<AudioSampleSink> sink_;  // null until connected
    StableRecordingInterval interval_;       // belongs to the source's queue, as all down to the meter, and didStart_
    HostTimePlacement placement_;
    AudioGapFiller gapFiller_;
    SoundMeter meter_;
    PrepareRingBufferAdaptor<CMSampleBuffer> prepareAdaptor_;
    RecordingEndWatch endWatch_;
    bool didStart_ = false;
};

}  // namespace zorvane
