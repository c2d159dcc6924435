// Hands items on in order to a receiver that may refuse for a while; loses none.
#pragma once

#include <cstddef>
#include <functional>
#include <utility>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/ReusableQueue.hpp"

namespace zorvane {

/// What its receiver can't take yet waits here, without a bound: the depth is what `append` returns. Any thread; the
/// receiver is called on the caller's, one call at a time, and must not call back into this buffer. Appending
/// allocates nothing but to grow beyond the longest queue yet.
template <class T>
class UnboundedBackpressureBuffer {
  public:
    enum class HandlerResult { handledItem, notReadyForItem };

    using Handler = std::function<HandlerResult(const T& item)>;

    explicit UnboundedBackpressureBuffer(Handler handler) : handler_(std::move(handler)) {}
    UnboundedBackpressureBuffer(const UnboundedBackpressureBuffer&) = delete;
    UnboundedBackpressureBuffer& operator=(const UnboundedBackpressureBuffer&) = delete;

    /// Puts `item` behind the others, hands on as many as the receiver takes, and returns how many are still held.
    std::size_t append(T item) {
        return queue_.syncBarrier([&] {
            array_.push(std::move(item));
            return handOver();
        });
    }

    /// Hands on as many items as the receiver takes, and returns how many are still held.
    std::size_t partialFlush() {
        return queue_.syncBarrier([this] { return handOver(); });
    }

    std::size_t count() const {
        return queue_.sync([this] { return array_.size(); });
    }

  private:
    std::size_t handOver() {
        while (!array_.empty() && handler_(array_.front()) == HandlerResult::handledItem) {
            array_.pop();
        }
        return array_.size();
    }

    const DispatchQueue queue_ = DispatchQueue::concurrent("UnboundedBufferBackpressureHandler");
    ReusableQueue<T> array_;  // guarded by queue_
    const Handler handler_;
};

}  // namespace zorvane
