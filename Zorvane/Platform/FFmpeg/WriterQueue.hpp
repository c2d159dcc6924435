// What a writer's thread is asked to do.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriterInput.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// Requests to a writer's thread, and a bounded queue of samples for each input. All but `next` may be called on any
/// thread; none of these blocks, nor allocates once writing has begun. Samples are handed out once the session has its
/// start, sound before pictures, since it costs next to nothing and must not be lost behind a slow one. Everything
/// before an end or a finish is handed out before it.
class WriterQueue final : public std::enable_shared_from_this<WriterQueue> {
  public:
    /// Pictures: enough to bridge a key frame. Each may be one of the few that a screen is captured into.
    static constexpr std::size_t videoCapacity = 3;
    /// Blocks of sound: two seconds, where a block is as short as 5 ms.
    static constexpr std::size_t audioCapacity = 400;

    struct Work {
        enum class Kind : std::uint8_t { sample, flush, finish, stop };
        Kind kind = Kind::stop;
        CMSampleBuffer sample;
        std::size_t input = 0;       ///< where the sample came in, counted in the order of `addInput`
        std::uint64_t fragment = 0;  ///< the fragment to flush
        std::optional<CMTime> sessionStart;
        std::optional<CMTime> sessionEnd;
        std::optional<Activity> activity;  ///< the work is in flight while this exists
    };

    WriterQueue();
    ~WriterQueue();
    WriterQueue(const WriterQueue&) = delete;
    WriterQueue& operator=(const WriterQueue&) = delete;

    /// A further entry, before `open`. A full one refuses: the newest sample is the one that isn't taken.
    std::shared_ptr<AVAssetWriterInputSink> addInput(AVMediaType mediaType);

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
    class Input;

    bool hasSample() const;
    bool hasWork() const { return !isOver_ && (flush_ || hasSample() || isFinishing_ || isStopping_); }
    Input& nextInput() const;
    void closeInputs();
    void dropSamples();
    void announce();

    mutable std::mutex mutex_;  // guards all below, and the inputs
    std::condition_variable changed_;
    std::vector<std::unique_ptr<Input>> inputs_;
    bool isFinishing_ = false;
    bool isStopping_ = false;
    bool isOver_ = false;  // the finish or the stop has been handed out
    std::optional<std::uint64_t> flush_;
    std::optional<CMTime> sessionStart_;
    std::optional<CMTime> sessionEnd_;
    std::optional<Activity> activity_;  // while there is work to hand out
};

}  // namespace zorvane
