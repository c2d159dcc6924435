#include "Zorvane/Platform/AVFoundation/AVAudioPCMBufferPool.hpp"

#include <cstddef>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace zorvane {

/// What is free: buffers, and the memory in which a shared pointer counts its owners. It lives until the pool and all
/// buffers are gone.
class AVAudioPCMBufferPool::Store {
  public:
    Store(const AVAudioFormat& format, std::uint32_t frameCapacity) : format_(format), frameCapacity_(frameCapacity) {}

    std::shared_ptr<AVAudioPCMBuffer> takeBuffer() {
        const std::lock_guard lock(mutex_);
        if (!buffers_.empty()) {
            return takeLast(buffers_);
        }
        auto buffer = AVAudioPCMBuffer::make(format_, frameCapacity_);
        if (!buffer) {
            throw std::bad_alloc();
        }
        buffers_.reserve(++bufferCount_);
        return buffer;
    }

    void giveBack(std::shared_ptr<AVAudioPCMBuffer> buffer) noexcept {
        const std::lock_guard lock(mutex_);
        buffers_.push_back(std::move(buffer));  // within what is reserved
    }

    /// Always of the same size.
    void* takeCount(std::size_t size) {
        const std::lock_guard lock(mutex_);
        if (!counts_.empty()) {
            return takeLast(counts_).release();
        }
        counts_.reserve(++countCount_);
        return new std::byte[size];
    }

    void giveBack(void* count) noexcept {
        const std::lock_guard lock(mutex_);
        counts_.emplace_back(static_cast<std::byte*>(count));  // within what is reserved
    }

  private:
    template <class T>
    static T takeLast(std::vector<T>& free) {
        T last = std::move(free.back());
        free.pop_back();
        return last;
    }

    const AVAudioFormat format_;
    const std::uint32_t frameCapacity_;
    std::mutex mutex_;
    std::vector<std::shared_ptr<AVAudioPCMBuffer>> buffers_;  // this and all below: guarded by mutex_
    std::vector<std::unique_ptr<std::byte[]>> counts_;
    std::size_t bufferCount_ = 0;
    std::size_t countCount_ = 0;
};

/// The deleter of a buffer that is out.
struct AVAudioPCMBufferPool::GiveBack {
    std::shared_ptr<Store> store;
    std::shared_ptr<AVAudioPCMBuffer> buffer;

    void operator()(AVAudioPCMBuffer*) noexcept { store->giveBack(std::move(buffer)); }
};

/// Makes a shared pointer count its owners in the store's memory.
template <class T>
class AVAudioPCMBufferPool::CountAllocator {
  public:
    using value_type = T;

    explicit CountAllocator(std::shared_ptr<Store> store) : store_(std::move(store)) {}
    template <class U>
    explicit CountAllocator(const CountAllocator<U>& other) : store_(other.store_) {}

    T* allocate(std::size_t count) { return static_cast<T*>(store_->takeCount(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t) noexcept { store_->giveBack(static_cast<void*>(memory)); }

    friend bool operator==(const CountAllocator& left, const CountAllocator& right) {
        return left.store_ == right.store_;
    }

  private:
    template <class U>
    friend class CountAllocator;

    std::shared_ptr<Store> store_;
};

AVAudioPCMBufferPool::AVAudioPCMBufferPool(const AVAudioFormat& format, std::uint32_t frameCapacity)
    : store_(std::make_shared<Store>(format, frameCapacity)) {}

std::shared_ptr<AVAudioPCMBuffer> AVAudioPCMBufferPool::take() {
    std::shared_ptr<AVAudioPCMBuffer> buffer = store_->takeBuffer();
    AVAudioPCMBuffer* const raw = buffer.get();
    return {raw, GiveBack{store_, std::move(buffer)}, CountAllocator<AVAudioPCMBuffer>(store_)};
}

}  // namespace zorvane
