// A first-in, first-out queue that keeps its memory.
#pragma once

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace zorvane {

/// Grows by doubling and never shrinks, so that traffic allocates nothing once its longest queue has been seen. An
/// item taken out is released at once. Not synchronised.
template <class T>
class ReusableQueue {
  public:
    std::size_t size() const { return count_; }
    bool empty() const { return count_ == 0; }

    void push(T item) {
        if (count_ == slots_.size()) {
            grow();
        }
        slots_[indexOf(count_)] = std::move(item);
        ++count_;
    }

    /// The oldest item. Not to be called when empty, as `pop`.
    const T& front() const { return *slots_[first_]; }

    void pop() {
        slots_[first_].reset();
        first_ = indexOf(1);
        --count_;
    }

  private:
    static constexpr std::size_t initialSlots = 8;

    // The number of slots is a power of two.
    std::size_t indexOf(std::size_t position) const { return (first_ + position) & (slots_.size() - 1); }

    void grow() {
        std::vector<std::optional<T>> larger(slots_.empty() ? initialSlots : 2 * slots_.size());
        for (std::size_t position = 0; position < count_; ++position) {
            larger[position] = std::move(slots_[indexOf(position)]);
        }
        slots_ = std::move(larger);
        first_ = 0;
    }

    std::vector<std::optional<T>> slots_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
};

}  // namespace zorvane
