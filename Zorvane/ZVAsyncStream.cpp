#include "Zorvane/ZVAsyncStream.hpp"

#include <deque>
#include <optional>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"

namespace zorvane::detail {

namespace {

class BufferedStream final : public StreamCore {
  public:
    explicit BufferedStream(std::size_t capacity) : capacity_(capacity) {}

    void yield(Element element) override {
        Element lost;  // destroyed after the lock is released
        MutexLock lock(mutex_);
        if (ended_) {
            return;
        }
        if (buffer_.size() == capacity_) {
            lost = std::move(buffer_.front());
            buffer_.pop_front();
        }
        buffer_.push_back(std::move(element));
        wakeConsumer();
    }

    void finish() override { end({}); }

    void drop() override {
        std::deque<Element> lost;
        end(&lost);
    }

    void onTermination(std::function<void()> handler) override {
        MutexLock lock(mutex_);
        if (!ended_) {
            std::swap(onTermination_, handler);
            lock.unlock();
            return;
        }
        lock.unlock();
        handler();
    }

    // The next element, or null at the end; else nothing, and `consumer` is resumed when that may have changed.
    std::optional<Element> take(const Continuation<>& consumer) {
        MutexLock lock(mutex_);
        if (!buffer_.empty()) {
            Element element = std::move(buffer_.front());
            buffer_.pop_front();
            return element;
        }
        if (ended_) {
            return Element();
        }
        consumer_ = consumer;
        return std::nullopt;
    }

  private:
    void wakeConsumer() ZV_REQUIRES(mutex_) {
        if (auto consumer = std::exchange(consumer_, std::nullopt)) {
            consumer->resume();
        }
    }

    void end(std::deque<Element>* lost) {
        MutexLock lock(mutex_);
        if (lost) {
            std::swap(*lost, buffer_);
        }
        if (std::exchange(ended_, true)) {
            return;
        }
        const auto handler = std::exchange(onTermination_, nullptr);
        wakeConsumer();
        lock.unlock();
        if (handler) {
            handler();
        }
    }

    const std::size_t capacity_;
    Mutex mutex_;
    std::deque<Element> buffer_ ZV_GUARDED_BY(mutex_);
    bool ended_ ZV_GUARDED_BY(mutex_) = false;
    std::optional<Continuation<>> consumer_ ZV_GUARDED_BY(mutex_);
    std::function<void()> onTermination_ ZV_GUARDED_BY(mutex_);
};

}  // namespace

std::shared_ptr<StreamCore> StreamCore::make(ZVStreamBuffering buffering) {
    return std::make_shared<BufferedStream>(buffering.capacity());
}

ZVTask<StreamCore::Element> StreamCore::next(std::shared_ptr<StreamCore> core) {
    auto& stream = static_cast<BufferedStream&>(*core);
    while (true) {
        auto [continuation, waiter] = makeContinuation();
        if (auto element = stream.take(continuation)) {
            co_return std::move(*element);
        }
        co_await std::move(waiter);
    }
}

}  // namespace zorvane::detail
