#include "Zorvane/Platform/FFmpeg/WriterThread.hpp"

#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;

/// Media that nothing follows is written after this time.
constexpr auto longestWait = milliseconds(500);
constexpr auto waitTolerance = milliseconds(50);

NSError nothingToWrite() {
    return {AVFoundationErrorDomain,
            AVErrorNoDataCaptured,
            {"No sample was appended inside the session, so there is no movie.", nullptr, {}}};
}

}  // namespace

/// Lives until both the thread and its owner have let go of it, since a handler may end the owner on the thread itself.
class WriterThread::Loop {
  public:
    Loop(std::shared_ptr<WriterQueue> queue, std::shared_ptr<HostClock> clock, Media media, ErrorHandler errorHandler)
        : queue_(std::move(queue)),
          clock_(std::move(clock)),
          media_(std::move(media)),
          errorHandler_(std::move(errorHandler)) {}

    /// Before the queue is asked to finish.
    void setFinishHandler(FinishHandler handler) { finishHandler_ = std::move(handler); }

    void run() {
        setCurrentThreadName("zv.writer");
        for (;;) {
            const WriterQueue::Work work = queue_->next();
            if (work.kind == WriterQueue::Work::Kind::stop) {
                return;
            }
            if (!error_) {
                attempt(work);
            }
            if (work.kind == WriterQueue::Work::Kind::finish) {
                media_ = {};
                // Not kept: it may hold the owner of this thread.
                std::exchange(finishHandler_, nullptr)(error_);
                return;
            }
        }
    }

  private:
    void attempt(const WriterQueue::Work& work) {
        try {
            perform(work);
            scheduleFlush();
        } catch (...) {
            error_ = std::current_exception();
            cancelFlush();
            media_ = {};
            queue_->close();
            errorHandler_(error_);
        }
    }

    void perform(const WriterQueue::Work& work) {
        keepSession(work);
        switch (work.kind) {
            case WriterQueue::Work::Kind::sample:
                media_.tracks[work.input]->append(work.sample, media_.file->track(work.input));
                break;
            case WriterQueue::Work::Kind::flush:
                if (media_.file->waitingFragment() == work.fragment) {
                    media_.file->flush();
                }
                break;
            case WriterQueue::Work::Kind::finish:
                finishFile();
                break;
            case WriterQueue::Work::Kind::stop:
                break;
        }
    }

    void keepSession(const WriterQueue::Work& work) {
        if (work.sessionStart && !std::exchange(isSessionOpen_, true)) {
            for (const auto& track : media_.tracks) {
                track->startSession(*work.sessionStart);
            }
        }
        if (work.sessionEnd && !std::exchange(isSessionEnded_, true)) {
            for (const auto& track : media_.tracks) {
                track->endSession(*work.sessionEnd);
            }
        }
    }

    void finishFile() {
        cancelFlush();
        std::vector<std::optional<std::int64_t>> endTicks;
        for (std::size_t index = 0; index < media_.tracks.size(); ++index) {
            media_.tracks[index]->drain(media_.file->track(index));
            endTicks.push_back(media_.tracks[index]->endTick());
        }
        if (media_.file->isEmpty()) {
            throw nothingToWrite();
        }
        media_.file->finish(endTicks);
    }

    // One timer for each fragment: it fires only where pictures come too seldom to fill it in time.
    void scheduleFlush() {
        const std::optional<std::uint64_t> fragment = media_.file->waitingFragment();
        if (!fragment || fragment == scheduledFragment_) {
            return;
        }
        cancelFlush();
        scheduledFragment_ = fragment;
        timer_ = clock_->schedule(clock_->now() + longestWait, waitTolerance,
                                  [queue = std::weak_ptr(queue_), number = *fragment] {
                                      if (const auto strong = queue.lock()) {
                                          strong->requestFlush(number);
                                      }
                                  });
    }

    void cancelFlush() {
        if (timer_) {
            clock_->cancel(*timer_);
            timer_.reset();
        }
    }

    const std::shared_ptr<WriterQueue> queue_;
    const std::shared_ptr<HostClock> clock_;
    Media media_;
    const ErrorHandler errorHandler_;
    FinishHandler finishHandler_;
    bool isSessionOpen_ = false;
    bool isSessionEnded_ = false;
    std::exception_ptr error_;
    std::optional<std::uint64_t> scheduledFragment_;
    std::optional<HostClock::TimerID> timer_;
};

WriterThread::WriterThread(std::shared_ptr<WriterQueue> queue, std::shared_ptr<HostClock> clock, Media media,
                           ErrorHandler errorHandler)
    : queue_(queue),
      loop_(std::make_shared<Loop>(std::move(queue), std::move(clock), std::move(media), std::move(errorHandler))),
      thread_([loop = loop_] { loop->run(); }) {}

WriterThread::~WriterThread() {
    queue_->requestStop();
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

void WriterThread::finish(FinishHandler handler) {
    loop_->setFinishHandler(std::move(handler));
    queue_->requestFinish();
}

}  // namespace zorvane
