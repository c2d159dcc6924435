// The thread that encodes and writes one file.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "Zorvane/Platform/FFmpeg/MediaFile.hpp"
#include "Zorvane/Platform/FFmpeg/MediaTrack.hpp"
#include "Zorvane/Platform/FFmpeg/WriterQueue.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"

namespace zorvane {

/// Does what a `WriterQueue` asks for, on a thread named "zv.writer": encodes samples, writes fragments in time, and
/// finishes the file. After the first error, of which it tells, it lets go of the file and only waits for its end.
class WriterThread {
  public:
    using ErrorHandler = std::function<void(std::exception_ptr error)>;
    /// Null, or the error that spoilt the file.
    using FinishHandler = std::function<void(std::exception_ptr error)>;

    struct Media {
        std::vector<std::unique_ptr<MediaTrack>> tracks;  ///< in the order of the queue's inputs
        std::unique_ptr<MediaFile> file;                  ///< with these tracks
    };

    /// Starts the thread. Both handlers are called on it, each at most once.
    WriterThread(std::shared_ptr<WriterQueue> queue, std::shared_ptr<HostClock> clock, Media media,
                 ErrorHandler errorHandler);

    /// Waits for a finish that was asked for; without one, leaves the file as it is. May run on the thread itself.
    ~WriterThread();

    /// Asks for the finish. Call it once.
    void finish(FinishHandler handler);

  private:
    class Loop;

    const std::shared_ptr<WriterQueue> queue_;
    const std::shared_ptr<Loop> loop_;
    std::thread thread_;
};

}  // namespace zorvane
