#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

#include <cstdlib>
#include <new>

namespace zorvane {

void CVPixelBufferRef::release() {
    if (buffer_ && buffer_->references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        CVPixelBufferPool::giveBack(buffer_);
    }
    buffer_ = nullptr;
}

std::shared_ptr<CVPixelBufferPool> CVPixelBufferPool::make(const CVPixelLayout& layout, std::size_t count) {
    constexpr std::size_t alignment = 64;  // a cache line, and the widest vector register
    const std::size_t stride = (layout.byteSize() + alignment - 1) / alignment * alignment;
    auto* memory = static_cast<std::byte*>(std::aligned_alloc(alignment, stride * count));
    if (!memory) {
        throw std::bad_alloc();
    }
    std::shared_ptr<void> owner(memory, &std::free);
    std::vector<std::byte*> slots;
    for (std::size_t index = 0; index < count; ++index) {
        slots.push_back(memory + index * stride);
    }
    return make(layout, slots, std::move(owner));
}

std::shared_ptr<CVPixelBufferPool> CVPixelBufferPool::make(const CVPixelLayout& layout,
                                                           const std::vector<std::byte*>& memory,
                                                           std::shared_ptr<void> memoryOwner) {
    std::shared_ptr<CVPixelBufferPool> pool(new CVPixelBufferPool(layout));
    pool->adopt(memory, std::move(memoryOwner));
    return pool;
}

void CVPixelBufferPool::adopt(const std::vector<std::byte*>& memory, std::shared_ptr<void> memoryOwner) {
    memoryOwner_ = std::move(memoryOwner);
    free_.reserve(memory.size());
    for (std::byte* bytes : memory) {
        buffers_.emplace_back(new CVPixelBuffer(layout_, bytes, buffers_.size()));
        free_.push_back(buffers_.back().get());
    }
}

CVPixelBufferRef CVPixelBufferPool::take() {
    const std::lock_guard lock(mutex_);
    if (free_.empty()) {
        return {};
    }
    CVPixelBuffer* buffer = free_.back();
    free_.pop_back();
    buffer->pool_ = shared_from_this();
    return CVPixelBufferRef(buffer);
}

std::size_t CVPixelBufferPool::outstanding() const {
    const std::lock_guard lock(mutex_);
    return buffers_.size() - free_.size();
}

void CVPixelBufferPool::giveBack(CVPixelBuffer* buffer) {
    // The pool may end with this reference, so it goes after the lock does.
    const std::shared_ptr<CVPixelBufferPool> pool = std::move(buffer->pool_);
    const std::lock_guard lock(pool->mutex_);
    pool->free_.push_back(buffer);
}

}  // namespace zorvane
