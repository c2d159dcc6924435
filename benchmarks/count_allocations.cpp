// Counts the allocations of the program it is loaded into (LD_PRELOAD), by the place in the code that asked for them.
// When the program exits, it writes a line for each such place to the file that ALLOCATIONS names: the count, the
// module, the offset in it, and the name of the function if the module exports one.
//
// `operator new` is counted too, so that what a C++ container asks for is put down to the module that holds the
// container's code and not to the C++ library.
#include <dlfcn.h>
#include <malloc.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

struct Place {
    std::atomic<std::uintptr_t> address{0};
    std::atomic<std::uint64_t> count{0};
};

// Far more than any program has; a full table ends the process, so no count is ever too small.
constexpr int capacityBits = 16;
constexpr std::size_t capacity = std::size_t{1} << capacityBits;
std::array<Place, capacity> places;

void count(const void* caller) {
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    const std::size_t first = address * 0x9E3779B97F4A7C15U >> (64 - capacityBits);
    for (std::size_t step = 0; step < capacity; ++step) {
        Place& place = places[(first + step) % capacity];
        std::uintptr_t expected = 0;
        if (place.address.compare_exchange_strong(expected, address) || expected == address) {
            place.count.fetch_add(1, std::memory_order_relaxed);
            return;
        }
    }
    std::abort();
}

void* allocate(std::size_t size, std::size_t alignment) {
    void* const memory = alignment > alignof(std::max_align_t) ? __libc_memalign(alignment, size) : __libc_malloc(size);
    if (!memory) {
        throw std::bad_alloc();
    }
    return memory;
}

void writePlace(std::FILE* file, const Place& place) {
    Dl_info info{};
    const auto address = place.address.load();
    dladdr(reinterpret_cast<void*>(address), &info);
    const auto base = reinterpret_cast<std::uintptr_t>(info.dli_fbase);
    std::fprintf(file, "%llu %s 0x%llx %s\n", static_cast<unsigned long long>(place.count.load()),
                 info.dli_fname ? info.dli_fname : "?", static_cast<unsigned long long>(address - base),
                 info.dli_sname ? info.dli_sname : "?");
}

__attribute__((destructor)) void writeReport() {
    const char* const path = std::getenv("ALLOCATIONS");
    std::FILE* const file = path ? std::fopen(path, "w") : nullptr;
    if (!file) {
        return;
    }
    for (const Place& place : places) {
        if (place.address.load() != 0) {
            writePlace(file, place);
        }
    }
    std::fclose(file);
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    count(__builtin_return_address(0));
    return __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size) {
    count(__builtin_return_address(0));
    return __libc_calloc(number, size);
}

void* realloc(void* memory, std::size_t size) {
    count(__builtin_return_address(0));
    return __libc_realloc(memory, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
    count(__builtin_return_address(0));
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    count(__builtin_return_address(0));
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    count(__builtin_return_address(0));
    *memory = __libc_memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}
}

void* operator new(std::size_t size) {
    count(__builtin_return_address(0));
    return allocate(size, 0);
}

void* operator new[](std::size_t size) {
    count(__builtin_return_address(0));
    return allocate(size, 0);
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    count(__builtin_return_address(0));
    return allocate(size, static_cast<std::size_t>(alignment));
}

void* operator new[](std::size_t size, std::align_val_t alignment) {
    count(__builtin_return_address(0));
    return allocate(size, static_cast<std::size_t>(alignment));
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    count(__builtin_return_address(0));
    return __libc_malloc(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    count(__builtin_return_address(0));
    return __libc_malloc(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
