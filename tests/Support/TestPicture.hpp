// The pictures of a test camera, in the layouts of real ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane {

/// A frame counter in the top left corner as `readFrameCounter` reads it, on black; the lower half is of one colour, or
/// white in a flash. At least 256 by 64 pixels, of even size.
class TestPicture {
  public:
    struct Colour {
        std::uint8_t luma = 0;
        std::uint8_t cb = 128;
        std::uint8_t cr = 128;
    };
    static constexpr Colour lowerHalf{.luma = 110, .cb = 90, .cr = 170};
    static constexpr Colour flash{.luma = 235, .cb = 128, .cr = 128};

    TestPicture(AVVideoSourceFormat format, CMVideoDimensions size);
    ~TestPicture();

    /// What a picture takes at most.
    std::size_t byteSize() const { return byteSize_; }
    /// Of the first plane; 0 for JPEGs.
    std::size_t bytesPerRow() const { return bytesPerRow_; }

    /// Returns how many bytes it has written.
    std::size_t draw(std::span<std::byte> to, std::uint32_t number, bool isFlash);

    /// Whether a picture in '420v' shows a flash.
    static bool isFlash(const CVPixelBuffer& picture);
    /// How far a picture's lower half is from its colour in '420v', at the worst of its three parts.
    static int colourError(const CVPixelBuffer& picture);

  private:
    class JPEGEncoder;

    void fill(std::vector<std::byte>& picture, Colour colour) const;
    void setPixel(std::byte* picture, std::size_t x, std::size_t y, Colour colour) const;

    const AVVideoSourceFormat format_;  // of JPEGs, of what they are made from
    const std::size_t width_;
    const std::size_t height_;
    std::size_t byteSize_;
    std::size_t bytesPerRow_;
    std::vector<std::byte> normal_;
    std::vector<std::byte> bright_;
    std::unique_ptr<JPEGEncoder> encoder_;  // null for raw ones
};

}  // namespace zorvane
