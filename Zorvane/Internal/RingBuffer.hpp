// The newest few elements of a stream.
#pragma once

#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Precondition.hpp"

namespace zorvane {

/// Keeps the newest `capacity` elements; an element that falls out is released at once.
///
/// A value: a copy has elements of its own (copying an empty ring allocates nothing) and shares the queue that guards
/// them. Any thread. Storage is taken by the first append and kept from then on.
template <class T>
class RingBuffer {
  public:
    class Iterator;

    /// A capacity of 0 ends the process.
    explicit RingBuffer(std::size_t capacity) : capacity_(capacity) {
        precondition(capacity > 0, "A ring buffer needs a capacity of at least 1.");
    }

    RingBuffer(const RingBuffer& other) : RingBuffer(other, other.contents()) {}
    RingBuffer& operator=(const RingBuffer&) = delete;

    std::size_t capacity() const { return capacity_; }

    void append(T element) {
        queue_.syncBarrier([&] { store(std::move(element)); });
    }

    void clear() {
        queue_.syncBarrier([this] {
            array_.clear();
            current_ = 0;
        });
    }

    std::size_t count() const {
        return queue_.sync([this] { return array_.size(); });
    }

    /// The newest element, or nothing when empty.
    std::optional<T> last() const {
        return queue_.sync([this]() -> std::optional<T> {
            if (array_.empty()) {
                return std::nullopt;
            }
            return (*this)[array_.size() - 1];
        });
    }

    /// The element with `index` older ones before it. Unguarded: for an owner that keeps writers away meanwhile.
    const T& operator[](std::size_t index) const { return array_[(current_ + index) % array_.size()]; }

    /// From the oldest element to the newest, of a copy made now: what happens to the ring meanwhile doesn't matter.
    Iterator makeIterator() const { return Iterator(*this); }
    Iterator begin() const { return makeIterator(); }
    std::default_sentinel_t end() const { return {}; }

  private:
    struct Contents {
        std::vector<T> array;
        std::size_t current;
    };

    RingBuffer(const RingBuffer& other, Contents contents)
        : capacity_(other.capacity_),
          queue_(other.queue_),
          array_(std::move(contents.array)),
          current_(contents.current) {}

    Contents contents() const {
        return queue_.sync([this] { return Contents{array_, current_}; });
    }

    void store(T element) {
        if (array_.size() < capacity_) {
            array_.reserve(capacity_);
            array_.push_back(std::move(element));
        } else {
            array_[current_] = std::move(element);
        }
        current_ = (current_ + 1) % capacity_;
    }

    std::size_t capacity_;
    DispatchQueue queue_ = DispatchQueue::concurrent("RingBuffer");
    std::vector<T> array_;     // guarded by queue_, as the next; its size is the number of elements held
    std::size_t current_ = 0;  // the next slot to write, which in a full ring holds the oldest element
};

/// An input iterator over a ring's elements at one moment.
template <class T>
class RingBuffer<T>::Iterator {
  public:
    using value_type = T;
    using difference_type = std::ptrdiff_t;

    explicit Iterator(const RingBuffer& ring) : ring_(ring) {}

    const T& operator*() const {
        return ring_.queue_.sync([this]() -> const T& { return ring_[index_]; });
    }
    Iterator& operator++() {
        ++index_;
        return *this;
    }
    void operator++(int) { ++index_; }
    bool operator==(std::default_sentinel_t) const { return index_ == ring_.array_.size(); }

  private:
    RingBuffer ring_;
    std::size_t index_ = 0;
};

}  // namespace zorvane
