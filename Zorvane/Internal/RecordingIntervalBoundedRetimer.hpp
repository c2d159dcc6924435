// Clips a stream of stamped items to the recording interval, and stretches its ends to reach it exactly.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Internal/RecordingIntervalBoundedRetimerError.hpp"
#include "Zorvane/Internal/RingBuffer.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// Exactly one item of a run is the first one: it opens the output.
enum class RecordingIntervalBoundedRetimerItemPosition { first, subsequent };

/// Takes items that show until the next one comes, such as frames, in the order of their times. Hands on what shows
/// during the recording, at strictly rising times: the item current at the start at exactly `recordFrom`, each later
/// one at its own time, and the one current at the end again at exactly `recordUntil`.
///
///     holding --an item at or after the start--> open --an item at or after the end--> closed
///        |                                         |                                     ^
///        +-----------------------------------------+-------------- finish --------------+
///
/// Holding: the newest `capacity` items are kept; all lie before the start, or the start isn't set. Open: an item goes
/// straight through. Closed: items are ignored.
///
/// Any thread; calls take turns, and none but the one that opens the output allocates once storage is warm. An error
/// leaves the retimer usable in the state it has reached. Both operations end the process when called from the handler
/// of the same retimer.
template <class T>
class RecordingIntervalBoundedRetimer {
  public:
    using Position = RecordingIntervalBoundedRetimerItemPosition;
    using Error = RecordingIntervalBoundedRetimerError;
    /// Gets an item and its output time, on the thread of the call that made it ready. May throw; the throw passes
    /// through to that call.
    using Handler = std::function<void(Position position, const T& item, CMTime time)>;

    /// Output times are host times, or count from `recordFrom` if `zeroBasedOutputTimes`. A capacity of 0 ends the
    /// process.
    RecordingIntervalBoundedRetimer(StableRecordingInterval interval, std::size_t capacity, bool zeroBasedOutputTimes)
        : zeroBasedOutputTimes_(zeroBasedOutputTimes), interval_(std::move(interval)), buffer_(capacity) {}

    /// Where the output goes. To be set before the first item.
    void setHandler(Handler handler) { handler_ = std::move(handler); }

    /// Takes an item that shows from `time`, on the host time clock. Throws an `Error`, or what the handler throws.
    void append(T item, CMTime time) {
        queue_.preconditionNotOnQueue();
        queue_.syncBarrier([&] { appendOnQueue({std::move(item), time}); });
    }

    /// Ends the output, after the recording has been stopped: opens it if need be and closes it at `recordUntil`.
    /// Throws as `append` does. There is no output if the recording was never started.
    void finish() {
        queue_.preconditionNotOnQueue();
        queue_.syncBarrier([this] { finishOnQueue(); });
    }

  private:
    struct Stamped {
        T item;
        CMTime time;
    };

    /// What one flush looks at: the held items, oldest first, and behind them the new one if there is one. The times
    /// rise strictly, so a question of "from when on" has an index for an answer.
    class Items {
      public:
        Items(const RingBuffer<Stamped>& held, const Stamped* added)
            : held_(held), heldCount_(held.count()), added_(added) {}

        std::size_t size() const { return heldCount_ + (added_ ? 1 : 0); }
        const Stamped& operator[](std::size_t index) const { return index < heldCount_ ? held_[index] : *added_; }
        const Stamped& back() const { return (*this)[size() - 1]; }

        /// The index of the first item at or after `time`; `size()` if there is none.
        std::size_t firstNotBefore(CMTime time) const {
            std::size_t index = size();
            while (index > 0 && (*this)[index - 1].time >= time) {
                --index;
            }
            return index;
        }

        /// The index of the item that shows at `time`, or else of the nearest one after it.
        std::size_t shownAt(CMTime time) const {
            const std::size_t next = firstNotBefore(time);
            const bool isExact = next < size() && (*this)[next].time == time;
            return isExact || next == 0 ? next : next - 1;
        }

      private:
        const RingBuffer<Stamped>& held_;
        const std::size_t heldCount_;
        const Stamped* const added_;
    };

    void appendOnQueue(Stamped added);
    void finishOnQueue();
    void flush(const Stamped* added);
    void handOn(const Items& items, std::size_t first, std::size_t firstInside);
    void closeAfter(const Items& items, std::size_t firstInside);
    void close(const T& item, std::int32_t timescale);
    void emit(const T& item, CMTime time, Position position);

    bool isInside(const Stamped& stamped) const { return interval_.contains(stamped.time.seconds()); }
    CMTime startTime(std::int32_t timescale) const { return CMTime::fromSeconds(interval_.recordFrom(), timescale); }
    CMTime endTime(std::int32_t timescale) const { return CMTime::fromSeconds(interval_.recordUntil(), timescale); }

    Handler handler_;
    const bool zeroBasedOutputTimes_;
    const DispatchQueue queue_ = DispatchQueue::concurrent("RecordingIntervalBoundedRetimer");

    // Guarded by queue_:
    StableRecordingInterval interval_;
    bool didEmitFirst_ = false;
    bool didEmitLast_ = false;
    RingBuffer<Stamped> buffer_;
    std::optional<Stamped> lastAppended_;
    CMTime lastEmitTime_ = kCMTimeNegativeInfinity;  // before the shift to zero
};

template <class T>
void RecordingIntervalBoundedRetimer<T>::appendOnQueue(Stamped added) {
    if (didEmitLast_) {
        return;
    }
    const CMTime previous = lastAppended_ ? lastAppended_->time : kCMTimeNegativeInfinity;
    if (!(previous < added.time) || !added.time.isNumeric()) {
        throw Error(typename Error::WrongOrder{previous, added.time});
    }
    try {
        flush(&added);
    } catch (...) {
        lastAppended_ = std::move(added);
        throw;
    }
    lastAppended_ = std::move(added);
}

template <class T>
void RecordingIntervalBoundedRetimer<T>::flush(const Stamped* added) {
    interval_.refresh();
    const Items items(buffer_, added);
    if (items.size() == 0) {
        return;
    }
    const CMTime start = startTime(items.back().time.timescale);
    const std::size_t firstInside = items.firstNotBefore(start);
    if (firstInside == items.size()) {
        if (added) {
            buffer_.append(*added);
        }
        return;
    }
    if (didEmitFirst_) {
        handOn(items, firstInside, firstInside);
        return;
    }
    didEmitFirst_ = true;
    const RingBuffer<Stamped> held = buffer_;  // cleared first, so that it is empty also if the handler throws
    buffer_.clear();
    const Items opening(held, added);
    const std::size_t shown = opening.shownAt(start);
    emit(opening[shown].item, start, Position::first);
    handOn(opening, shown + 1, firstInside);
}

/// Hands on the items from index `first` that belong to the recording, and closes the output if they reach its end.
template <class T>
void RecordingIntervalBoundedRetimer<T>::handOn(const Items& items, std::size_t first, std::size_t firstInside) {
    for (std::size_t index = first; index < items.size(); ++index) {
        if (isInside(items[index])) {
            emit(items[index].item, items[index].time, Position::subsequent);
        }
    }
    if (items.back().time.seconds() >= interval_.recordUntil()) {
        closeAfter(items, firstInside);
    }
}

/// Closes the output with the item that shows at the end: the last one inside, else the one before all of these.
template <class T>
void RecordingIntervalBoundedRetimer<T>::closeAfter(const Items& items, std::size_t firstInside) {
    const Stamped* closing = lastAppended_ ? &*lastAppended_ : &items.back();
    for (std::size_t index = firstInside; index < items.size(); ++index) {
        if (isInside(items[index])) {
            closing = &items[index];
        }
    }
    close(closing->item, closing->time.timescale);
}

/// Emits `item` at the end of the recording, unless an item stands there already.
template <class T>
void RecordingIntervalBoundedRetimer<T>::close(const T& item, std::int32_t timescale) {
    didEmitLast_ = true;
    const CMTime end = endTime(timescale);
    if (lastEmitTime_ < end) {
        emit(item, end, Position::subsequent);
        return;
    }
    const double tick = 1.0 / timescale;
    const double duration = interval_.recordUntil() - interval_.recordFrom();
    if (lastEmitTime_ <= endTime(lastEmitTime_.timescale) && !(duration > tick)) {
        throw Error(typename Error::TimescaleExceedsSession{tick, duration});
    }
}

template <class T>
void RecordingIntervalBoundedRetimer<T>::emit(const T& item, CMTime time, Position position) {
    if (!(lastEmitTime_ < time)) {
        throw Error(typename Error::InternalError{lastEmitTime_, time});
    }
    lastEmitTime_ = time;
    if (!handler_) {
        throw Error(typename Error::HandlerNotSet{});
    }
    handler_(position, item, zeroBasedOutputTimes_ ? time - startTime(time.timescale) : time);
}

template <class T>
void RecordingIntervalBoundedRetimer<T>::finishOnQueue() {
    if (!lastAppended_) {
        throw Error(typename Error::FinishedWithoutFrames{});
    }
    const T& item = lastAppended_->item;
    const std::int32_t timescale = lastAppended_->time.timescale;
    flush(nullptr);
    const bool wasStarted = std::isfinite(interval_.recordFrom());
    if (wasStarted && !std::exchange(didEmitFirst_, true)) {
        // All items lie before the start, and the newest is the one that shows there.
        emit(item, startTime(timescale), Position::first);
    }
    if (wasStarted && !didEmitLast_ && std::isfinite(interval_.recordUntil())) {
        close(item, timescale);
    }
    didEmitFirst_ = true;
    didEmitLast_ = true;
    lastAppended_.reset();
}

}  // namespace zorvane
