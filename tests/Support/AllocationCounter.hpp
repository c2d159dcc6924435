// Counts what a thread allocates, to prove that a path allocates nothing.
#pragma once

#include <cstddef>

namespace zorvane::testing {

/// Counts the allocations with `operator new` that the calling thread makes while the counter lives.
///
/// Under a sanitizer, which brings an `operator new` of its own, nothing can be counted: skip the test unless
/// `isAvailable`.
class AllocationCounter {
  public:
    static bool isAvailable();

    AllocationCounter();

    /// The allocations of this thread since the counter was made.
    std::size_t count() const;

  private:
    std::size_t before_;
};

}  // namespace zorvane::testing
