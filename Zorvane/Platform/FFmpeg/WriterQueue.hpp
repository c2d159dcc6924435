// What a writer's thread is asked to do.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriterInput.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// Requests to a writer's thread, and the bounded queue of its video samples. All but `next` may be called on any
/// thread, none of these blocks or allocates. Samples are handed out once the session has its start; everything before
/// an end or a finish is handed out before it.
class WriterQueue final : public AVAssetWriterInputSink {
  public:
    /// Enough to bridge a key frame. Each may hold one of the few pictures that a screen is captured into.
    static constexpr std::size_t capacity = 3;

    struct Work {
        enum class Kind : std::uint8_t { sample, flush, finish, stop };
        Kind kind = Kind::stop;
        CMSampleBuffer sample;
        std::uint64_t fragment = 0;  ///< the fragment to flush
        std::optional<CMTime> sessionStart;
        std::optional<CMTime> sessionEnd;
        std::optional<Activity> activity;  ///< the work is in flight while this exists
    };

    // The sink. A full queue refuses: the newest sample is the one that is lost.
    bool isReadyForMoreMediaData() const override;
    bool append(const CMSampleBuffer& sampleBuffer) override;
    void markAsFinished() override;

    /// Begins to take samples.
    void open();
    /// Lets go of the samples and takes no more, while the other requests go on.
    void close();

    void startSession(CMTime time);
    void endSession(CMTime time);
    /// Asks for a fragment to be written, though it isn't full yet.
    void requestFlush(std::uint64_t fragment);
    /// The last request: nothing but the samples before it is handed out any more, then the finish.
    void requestFinish();
    /// Ends the work at once, unless a finish was requested.
    void requestStop();

    /// The next thing to do; waits for it. Of the writer's thread.
    Work next();

  private:
    bool hasSample() const { return count_ > 0 && sessionStart_.has_value(); }
    bool hasWork() const { return !isOver_ && (flush_ || hasSample() || isFinishing_ || isStopping_); }
    CMSampleBuffer takeSample();
    void dropSamples();
    void announce();

    mutable std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    std::array<CMSampleBuffer, capacity> samples_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
    bool isOpen_ = false;
    bool isFinishing_ = false;
    bool isStopping_ = false;
    bool isOver_ = false;  // the finish or the stop has been handed out
    std::optional<std::uint64_t> flush_;
    std::optional<CMTime> sessionStart_;
    std::optional<CMTime> sessionEnd_;
    std::optional<Activity> activity_;  // while there is work to hand out
};

}  // namespace zorvane
