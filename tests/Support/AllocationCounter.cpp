#include "tests/Support/AllocationCounter.hpp"

#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZV_COUNTS_ALLOCATIONS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZV_COUNTS_ALLOCATIONS 0
#endif
#endif
#ifndef ZV_COUNTS_ALLOCATIONS
#define ZV_COUNTS_ALLOCATIONS 1
#endif

namespace zorvane::testing {
namespace {

// Without a constructor, so that it can be used from the first allocation of a thread on.
thread_local std::size_t allocations = 0;

}  // namespace

bool AllocationCounter::isAvailable() {
    return ZV_COUNTS_ALLOCATIONS;
}

AllocationCounter::AllocationCounter() : before_(allocations) {}

std::size_t AllocationCounter::count() const {
    return allocations - before_;
}

#if ZV_COUNTS_ALLOCATIONS

void* countedAllocation(std::size_t size, std::size_t alignment) {
    ++allocations;
    // aligned_alloc asks for a multiple of the alignment.
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    void* const memory = std::aligned_alloc(alignment, rounded == 0 ? alignment : rounded);
    if (!memory) {
        throw std::bad_alloc();
    }
    return memory;
}

#endif

}  // namespace zorvane::testing

#if ZV_COUNTS_ALLOCATIONS

// The array and nothrow forms of the standard library call these.
void* operator new(std::size_t size) {
    return zorvane::testing::countedAllocation(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return zorvane::testing::countedAllocation(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

#endif
