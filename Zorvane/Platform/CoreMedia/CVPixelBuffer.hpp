// Pictures in memory, and pools of them that allocate nothing once they are made.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace zorvane {

/// Four-character codes of the pixel layouts.
enum class CVPixelFormat : std::uint32_t {
    bgra = 0x42475241,  ///< 'BGRA': bytes blue, green, red, alpha (alpha is ignored)
    l10r = 0x6C313072,  ///< 'l10r': little-endian 32 bits, from the top: 2 unused, 10 red, 10 green, 10 blue
    /// '420v': a plane of luma, then one of pairs Cb, Cr at half the width and height, rounded up; bytes, video range,
    /// with the matrix of ITU-R BT.601, as cameras give it.
    yCbCr420VideoRange = 0x34323076,
};

/// The colour space that pixel values are meant in.
enum class CGColorSpaceName : std::uint8_t { sRGB, displayP3 };

/// The shape of a picture. `bytesPerRow` is that of every plane; it is at least four times `width`, of '420v' at least
/// `width`, rounded up to an even number.
struct CVPixelLayout {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::size_t bytesPerRow = 0;
    CVPixelFormat format = CVPixelFormat::bgra;
    CGColorSpaceName colorSpace = CGColorSpaceName::sRGB;

    bool isBiPlanar() const { return format == CVPixelFormat::yCbCr420VideoRange; }
    /// Where the second plane begins, in bytes from the first; for '420v' only.
    std::size_t chromaOffset() const { return bytesPerRow * static_cast<std::size_t>(height); }
    std::size_t byteSize() const {
        const auto rows = static_cast<std::size_t>(height);
        return bytesPerRow * (isBiPlanar() ? rows + (rows + 1) / 2 : rows);
    }
    bool operator==(const CVPixelLayout&) const = default;
};

class CVPixelBufferPool;

/// One picture of a pool. Written by its maker before it is put into a sample, read-only afterwards.
class CVPixelBuffer {
  public:
    CVPixelBuffer(const CVPixelBuffer&) = delete;
    CVPixelBuffer& operator=(const CVPixelBuffer&) = delete;

    const CVPixelLayout& layout() const { return layout_; }
    const std::byte* bytes() const { return bytes_; }
    std::byte* mutableBytes() { return bytes_; }

    /// The picture's place in its pool, 0 to count - 1: a backend finds its own record of the memory by it.
    std::size_t slot() const { return slot_; }

  private:
    friend class CVPixelBufferPool;
    friend class CVPixelBufferRef;
    CVPixelBuffer(CVPixelLayout layout, std::byte* bytes, std::size_t slot)
        : layout_(layout), bytes_(bytes), slot_(slot) {}

    CVPixelLayout layout_;
    std::byte* bytes_;
    std::size_t slot_;
    std::atomic<std::uint32_t> references_{0};
    std::shared_ptr<CVPixelBufferPool> pool_;  // set while the picture is out, so that it outlives the pool's owner
};

/// A counted reference to a picture. Copying costs one atomic increment; the last one gives the picture back to its
/// pool. Different references may be used on different threads.
class CVPixelBufferRef {
  public:
    CVPixelBufferRef() = default;
    CVPixelBufferRef(const CVPixelBufferRef& other) : buffer_(other.buffer_) { retain(); }
    CVPixelBufferRef(CVPixelBufferRef&& other) noexcept : buffer_(std::exchange(other.buffer_, nullptr)) {}
    CVPixelBufferRef& operator=(CVPixelBufferRef other) noexcept {
        std::swap(buffer_, other.buffer_);
        return *this;
    }
    ~CVPixelBufferRef() { release(); }

    explicit operator bool() const { return buffer_ != nullptr; }
    CVPixelBuffer* operator->() const { return buffer_; }
    CVPixelBuffer& operator*() const { return *buffer_; }

    /// Whether both refer to the same picture (not merely an equal one).
    bool operator==(const CVPixelBufferRef&) const = default;

  private:
    friend class CVPixelBufferPool;
    explicit CVPixelBufferRef(CVPixelBuffer* buffer) : buffer_(buffer) { retain(); }
    void retain() const {
        if (buffer_) {
            buffer_->references_.fetch_add(1, std::memory_order_relaxed);
        }
    }
    void release();

    CVPixelBuffer* buffer_ = nullptr;
};

/// A fixed number of pictures of one layout. Taking and giving back allocate nothing. Any thread.
class CVPixelBufferPool : public std::enable_shared_from_this<CVPixelBufferPool> {
  public:
    /// A pool on memory of its own. Pages are touched when they are first written.
    static std::shared_ptr<CVPixelBufferPool> make(const CVPixelLayout& layout, std::size_t count);

    /// A pool on a backend's memory: one picture per pointer, each `layout.byteSize()` long. `memoryOwner` is kept
    /// until the pool and all its pictures are gone.
    static std::shared_ptr<CVPixelBufferPool> make(const CVPixelLayout& layout, const std::vector<std::byte*>& memory,
                                                   std::shared_ptr<void> memoryOwner);

    /// A free picture with undefined content, or an empty reference when all are out.
    CVPixelBufferRef take();

    /// How many pictures are out at this moment.
    std::size_t outstanding() const;

    const CVPixelLayout& layout() const { return layout_; }

  private:
    friend class CVPixelBufferRef;
    explicit CVPixelBufferPool(const CVPixelLayout& layout) : layout_(layout) {}
    void adopt(const std::vector<std::byte*>& memory, std::shared_ptr<void> memoryOwner);
    static void giveBack(CVPixelBuffer* buffer);

    CVPixelLayout layout_;
    std::shared_ptr<void> memoryOwner_;
    std::vector<std::unique_ptr<CVPixelBuffer>> buffers_;
    mutable std::mutex mutex_;
    std::vector<CVPixelBuffer*> free_;  // guarded by mutex_; capacity reserved for all
};

}  // namespace zorvane
