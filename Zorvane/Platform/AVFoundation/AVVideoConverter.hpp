// Turns pictures as devices give them into pictures as recorders take them: any raw layout, or JPEG, into '420v'.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "Zorvane/Platform/CoreMedia/CMFormatDescription.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane {

/// How a device lays out its pictures. The names tell the order of the bytes in memory; `x` is a byte without meaning,
/// which holds for alpha too.
enum class AVVideoSourceFormat : std::uint8_t {
    yuyv,  ///< packed 4:2:2, as all below to `yvyu`
    uyvy,
    yvyu,
    nv12,  ///< luma, then pairs Cb, Cr
    nv21,  ///< luma, then pairs Cr, Cb
    i420,  ///< luma, Cb, Cr
    yv12,  ///< luma, Cr, Cb
    gray8,
    rgb,
    bgr,
    rgbx,
    bgrx,
    xrgb,
    xbgr,
    jpeg,  ///< each picture a JPEG file; grey, or with chroma as 4:2:0, 4:2:2 or 4:4:4
};

/// One picture in a device's memory. Raw ones have as many planes as their format, each with its rows; a JPEG is the
/// first plane's bytes.
struct AVVideoSourcePicture {
    std::array<std::span<const std::byte>, 3> planes;
    std::array<std::size_t, 3> bytesPerRow{};
};

/// Converts the pictures of one stream. Used by one thread at a time. Nothing but a decoder allocates once a picture of
/// usual size has come.
class AVVideoConverter {
  public:
    virtual ~AVVideoConverter() = default;

    /// Fills all of `to`, which is '420v' of the stream's size. Throws `NSError` for a picture that is cut off, broken
    /// or of another size; the next one may be good again.
    virtual void convert(const AVVideoSourcePicture& from, CVPixelBuffer& to) = 0;
};

/// Makes converters; one per platform. Any thread.
class AVVideoConverting {
  public:
    virtual ~AVVideoConverting() = default;

    /// Throws `NSError` when such pictures can't be converted.
    virtual std::unique_ptr<AVVideoConverter> makeConverter(AVVideoSourceFormat format, CMVideoDimensions size) = 0;
};

}  // namespace zorvane
