// Observable values: a present value, and word of each new one.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

#include "Zorvane/ZVAsyncStream.hpp"
#include "Zorvane/ZVMainExecutor.hpp"

namespace zorvane {

/// Keeps a callback subscribed for as long as it lives. Move-only; any thread may let go of it. Once it is gone no
/// further call begins; let go of on the main executor, none is under way either.
class [[nodiscard]] ZVSubscription {
  public:
    ZVSubscription() = default;
    explicit ZVSubscription(std::shared_ptr<void> subscriber) : subscriber_(std::move(subscriber)) {}
    ZVSubscription(ZVSubscription&&) noexcept = default;
    ZVSubscription& operator=(ZVSubscription&&) noexcept = default;

    void cancel() { subscriber_.reset(); }

  private:
    std::shared_ptr<void> subscriber_;
};

namespace detail {

/// What a publisher and its subject share.
template <class T>
class PublishedValue : public std::enable_shared_from_this<PublishedValue<T>> {
  public:
    using Handler = std::function<void(const T&)>;

    explicit PublishedValue(T value) : value_(std::move(value)) {}

    T value() const {
        std::lock_guard lock(mutex_);
        return value_;
    }

    void send(T value) {
        {
            std::lock_guard lock(mutex_);
            value_ = value;
        }
        const auto handlers = handlers_;  // a handler may subscribe
        for (const auto& handler : handlers) {
            if (const auto live = handler.lock()) {
                (*live)(value);
            }
        }
    }

    ZVSubscription subscribe(Handler handler) {
        auto held = std::make_shared<Handler>(std::move(handler));
        auto begin = [self = this->shared_from_this(), weak = std::weak_ptr(held)] {
            if (const auto live = weak.lock()) {
                std::erase_if(self->handlers_, [](const auto& earlier) { return earlier.expired(); });
                self->handlers_.push_back(weak);
                (*live)(self->value());
            }
        };
        if (ZVMainExecutor::isCurrent()) {
            begin();
        } else {
            ZVMainExecutor::post(std::move(begin));
        }
        return ZVSubscription(std::move(held));
    }

  private:
    mutable std::mutex mutex_;
    T value_;                                       // guarded by mutex_
    std::vector<std::weak_ptr<Handler>> handlers_;  // touched on the main executor only
};

}  // namespace detail

/// The public side of an observable value. A cheap copy; it outlives the object it belongs to and then tells of no
/// more changes. Any thread.
///
///     auto subscription = window->titlePublisher().subscribe([](const auto& title) { show(title); });
template <class T>
class ZVPublisher {
  public:
    explicit ZVPublisher(std::shared_ptr<detail::PublishedValue<T>> shared) : shared_(std::move(shared)) {}

    T value() const { return shared_->value(); }

    /// Calls `handler` on the main executor with the value of now and then with each new one, in order, for as long as
    /// the subscription is kept. Subscribing on the main executor gives the first value inside this call. The handler
    /// must not throw.
    ZVSubscription subscribe(std::function<void(const T&)> handler) const {
        return shared_->subscribe(std::move(handler));
    }

    /// The same as a stream, which keeps every value until it is taken. It ends when its consumer drops it.
    ZVAsyncStream<T> values() const {
        return values([](const T& value) { return value; });
    }

    /// The stream of what `transform(value)` makes of each value. It runs on the main executor and must not throw.
    template <class Transform>
    auto values(Transform transform) const {
        using Result = std::invoke_result_t<const Transform&, const T&>;
        auto [stream, source] = ZVAsyncStream<Result>::make(ZVStreamBuffering::unbounded());
        auto forward = [source, transform = std::move(transform)](const T& value) { source.yield(transform(value)); };
        auto kept = std::make_shared<ZVSubscription>(subscribe(std::move(forward)));
        source.onTermination([kept] { kept->cancel(); });
        return std::move(stream);
    }

  private:
    std::shared_ptr<detail::PublishedValue<T>> shared_;
};

}  // namespace zorvane
