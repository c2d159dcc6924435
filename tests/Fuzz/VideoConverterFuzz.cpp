#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "FuzzTarget.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegVideoConverter.hpp"

namespace {

using zorvane::fuzz::require;

/// Memory whose last byte is the last that can be touched. What vector code does isn't seen by a sanitizer.
class FencedMemory {
  public:
    explicit FencedMemory(std::size_t size) : size_(size) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t usable = (size + page - 1) / page * page;
        length_ = usable + page;
        void* const mapping = mmap(nullptr, length_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        require(mapping != MAP_FAILED, "there is memory");
        begin_ = static_cast<std::byte*>(mapping);
        require(mprotect(begin_ + usable, page, PROT_NONE) == 0, "the fence stands");
        bytes_ = begin_ + usable - size;
    }
    ~FencedMemory() { munmap(begin_, length_); }
    FencedMemory(const FencedMemory&) = delete;
    FencedMemory& operator=(const FencedMemory&) = delete;

    std::span<std::byte> bytes() const { return {bytes_, size_}; }

    /// Whether all that lies before the memory on its page is as it was.
    bool isUntouchedBefore() const {
        for (const std::byte* byte = begin_; byte < bytes_; ++byte) {
            if (*byte != std::byte{0}) {
                return false;
            }
        }
        return true;
    }

  private:
    const std::size_t size_;
    std::size_t length_ = 0;
    std::byte* begin_ = nullptr;
    std::byte* bytes_ = nullptr;
};

/// What an input begins with; the rest is the picture.
struct Header {
    std::uint8_t format;
    std::uint8_t width;
    std::uint8_t height;
    std::uint8_t extraBytesPerRow;          ///< of the destination
    std::array<std::uint8_t, 3> kindOfRow;  ///< of each plane: 0 for the row alone, 1 for padding, others for nonsense
    std::array<std::uint8_t, 3> missing;    ///< of each plane, in bytes
};

zorvane::CVPixelLayout destinationLayout(const Header& header) {
    const std::int32_t width = header.width + 1;
    const auto bytesPerRow = static_cast<std::size_t>(width + width % 2 + header.extraBytesPerRow % 80);
    return {width, header.height + 1, bytesPerRow, zorvane::CVPixelFormat::yCbCr420VideoRange};
}

/// As a device gives it that may be mistaken about its rows.
std::size_t bytesPerRow(std::uint8_t kind, std::size_t width) {
    constexpr std::size_t huge = std::size_t{1} << 63;
    switch (kind % 8) {
        case 0:
            return width;
        case 1:
        case 2:
        case 3:
            return width * 4 + kind / 8;
        case 4:
            return width * 2;
        case 5:
            return huge + width * 4;
        case 6:
            return ~std::size_t{0} / (kind / 8 + 1U) + 1;
        default:
            return kind / 8;
    }
}

class Target {
  public:
    explicit Target(const Header& header)
        : header_(header), format_(static_cast<zorvane::AVVideoSourceFormat>(header.format % 15)) {}

    void run(std::span<const std::byte> content) {
        const zorvane::CVPixelLayout layout = destinationLayout(header_);
        const FencedMemory memory(layout.byteSize());
        const auto pool = zorvane::CVPixelBufferPool::make(layout, {memory.bytes().data()}, nullptr);
        const zorvane::CVPixelBufferRef to = pool->take();
        const auto converter = zorvane::FFmpegVideoConverting().makeConverter(format_, {layout.width, layout.height});
        // A whole one, one that is cut off, and what the converter is left in after that.
        for (const std::size_t length : {content.size(), content.size() / 2, content.size()}) {
            convert(*converter, content.first(length), *to);
            require(memory.isUntouchedBefore(), "nothing is written before a picture");
        }
    }

  private:
    void convert(zorvane::AVVideoConverter& converter, std::span<const std::byte> content,
                 zorvane::CVPixelBuffer& to) const {
        if (format_ == zorvane::AVVideoSourceFormat::jpeg) {
            const FencedMemory file(content.size());
            std::ranges::copy(content, file.bytes().begin());
            attempt(converter, {{file.bytes()}, {}}, to);
        } else {
            convertPlanes(converter, content, to);
        }
    }

    void convertPlanes(zorvane::AVVideoConverter& converter, std::span<const std::byte> content,
                       zorvane::CVPixelBuffer& to) const {
        const auto width = static_cast<std::size_t>(to.layout().width);
        const auto height = static_cast<std::size_t>(to.layout().height);
        std::array<std::size_t, 3> sizes{};
        zorvane::AVVideoSourcePicture picture;
        for (std::size_t plane = 0; plane < 3; ++plane) {
            picture.bytesPerRow[plane] = bytesPerRow(header_.kindOfRow[plane], width);
            sizes[plane] = std::min<std::size_t>(picture.bytesPerRow[plane], 4 * width + 64) * height;
            sizes[plane] -= std::min<std::size_t>(sizes[plane], header_.missing[plane]);
        }
        const std::array<FencedMemory, 3> planes{FencedMemory(sizes[0]), FencedMemory(sizes[1]),
                                                 FencedMemory(sizes[2])};
        for (std::size_t plane = 0; plane < 3; ++plane) {
            const std::span<std::byte> bytes = planes[plane].bytes();
            std::ranges::copy(content.first(std::min(content.size(), bytes.size())), bytes.begin());
            picture.planes[plane] = bytes;
        }
        attempt(converter, picture, to);
    }

    static void attempt(zorvane::AVVideoConverter& converter, const zorvane::AVVideoSourcePicture& picture,
                        zorvane::CVPixelBuffer& to) {
        zorvane::fuzz::attempt([&] {
            converter.convert(picture, to);
            return true;
        });
    }

    const Header header_;
    const zorvane::AVVideoSourceFormat format_;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Header header{};
    if (size >= sizeof(header)) {
        std::memcpy(&header, data, sizeof(header));
        Target(header).run(std::as_bytes(std::span(data, size).subspan(sizeof(header))));
    }
    return 0;
}
