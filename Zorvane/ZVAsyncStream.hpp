// Values that arrive over time, for one consumer that awaits them one by one.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "Zorvane/ZVTask.hpp"

namespace zorvane {

/// What a stream does with values that its consumer has not taken yet.
class ZVStreamBuffering {
  public:
    /// Keeps all.
    static ZVStreamBuffering unbounded() { return ZVStreamBuffering(std::numeric_limits<std::size_t>::max()); }
    /// Keeps the newest `count` values, at least one, and loses the ones before.
    static ZVStreamBuffering newest(std::size_t count) { return ZVStreamBuffering(count > 0 ? count : 1); }

    std::size_t capacity() const { return capacity_; }

  private:
    explicit ZVStreamBuffering(std::size_t capacity) : capacity_(capacity) {}

    std::size_t capacity_;
};

namespace detail {

/// What of a stream does not depend on its element type. Any thread.
class StreamCore {
  public:
    using Element = std::shared_ptr<void>;

    static std::shared_ptr<StreamCore> make(ZVStreamBuffering buffering);
    virtual ~StreamCore() = default;

    virtual void yield(Element element) = 0;
    virtual void finish() = 0;
    virtual void drop() = 0;
    virtual void onTermination(std::function<void()> handler) = 0;

    /// The next element, or null at the end.
    static ZVTask<Element> next(std::shared_ptr<StreamCore> core);
};

}  // namespace detail

/// The consuming side of a stream.
///
///     while (auto displays = co_await updates.next()) { show(*displays); }
///
/// It is move-only and has one consumer at a time. Dropping it ends the stream for its source.
template <class T>
class ZVAsyncStream {
  public:
    class Source;

    /// A new stream and the source that feeds it: `auto [stream, source] = ZVAsyncStream<int>::make(...)`.
    static std::pair<ZVAsyncStream, Source> make(ZVStreamBuffering buffering) {
        auto core = detail::StreamCore::make(buffering);
        return {ZVAsyncStream(core), Source(core)};
    }

    ZVAsyncStream(ZVAsyncStream&&) noexcept = default;
    ZVAsyncStream& operator=(ZVAsyncStream&& other) noexcept {
        std::swap(core_, other.core_);
        return *this;
    }
    ~ZVAsyncStream() {
        if (core_) {
            core_->drop();
        }
    }

    /// Waits for the next value; nothing at the end of the stream, when all values before it have been taken. Throws
    /// `ZVCancelled` when the waiting task is cancelled; the stream itself goes on. Must not be called while another
    /// call waits. Dropping the stream ends a call that waits.
    ZVTask<std::optional<T>> next() { return nextOf(core_); }

  private:
    explicit ZVAsyncStream(std::shared_ptr<detail::StreamCore> core) : core_(std::move(core)) {}

    static ZVTask<std::optional<T>> nextOf(std::shared_ptr<detail::StreamCore> core) {
        auto element = co_await detail::StreamCore::next(std::move(core));
        std::optional<T> value;
        if (element) {
            value.emplace(std::move(*static_cast<T*>(element.get())));
        }
        co_return value;
    }

    std::shared_ptr<detail::StreamCore> core_;
};

/// The feeding side of a stream. Copies feed the same stream; any thread. When the last copy goes, the stream finishes.
template <class T>
class ZVAsyncStream<T>::Source {
  public:
    /// Adds a value. Does nothing once the stream has ended.
    void yield(T value) const { feed_->core->yield(std::make_shared<T>(std::move(value))); }

    /// Ends the stream behind the values it still holds.
    void finish() const { feed_->core->finish(); }

    /// Has `handler` called once when the stream ends, finished or dropped, on the thread that ended it; at once if it
    /// has ended. A second handler replaces the first.
    void onTermination(std::function<void()> handler) const { feed_->core->onTermination(std::move(handler)); }

  private:
    friend ZVAsyncStream;

    struct Feed {
        std::shared_ptr<detail::StreamCore> core;
        explicit Feed(std::shared_ptr<detail::StreamCore> shared) : core(std::move(shared)) {}
        Feed(const Feed&) = delete;
        Feed& operator=(const Feed&) = delete;
        ~Feed() { core->finish(); }
    };

    explicit Source(std::shared_ptr<detail::StreamCore> core) : feed_(std::make_shared<Feed>(std::move(core))) {}

    std::shared_ptr<Feed> feed_;
};

}  // namespace zorvane
