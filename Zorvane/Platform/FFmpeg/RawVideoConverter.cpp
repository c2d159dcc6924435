#include "Zorvane/Platform/FFmpeg/RawVideoConverter.hpp"

#include <libyuv/convert.h>
#include <libyuv/convert_argb.h>
#include <libyuv/convert_from.h>
#include <libyuv/planar_functions.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/AVFoundation/AVVideoPlaneShape.hpp"
#include "Zorvane/Platform/FFmpeg/BiPlanarPicture.hpp"
#include "Zorvane/Platform/FFmpeg/VideoRange.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

using Format = AVVideoSourceFormat;

/// How a format with all samples in one plane is brought into three.
struct Packing {
    using Split = int (*)(const std::uint8_t* from, int bytesPerRow, std::uint8_t* luma, int lumaBytesPerRow,
                          std::uint8_t* cb, int cbBytesPerRow, std::uint8_t* cr, int crBytesPerRow, int width,
                          int height);
    using Expand = int (*)(const std::uint8_t* from, int bytesPerRow, std::uint8_t* to, int toBytesPerRow, int width,
                           int height);

    Split split = nullptr;
    Expand expand = nullptr;  ///< before that, to four bytes for each pixel; where the library would allocate
    bool swapsChroma = false;
};

// The library names the bytes of a pixel in the order that a little-endian word has, so mostly from the last to the
// first.
Packing packingOf(Format format) {
    switch (format) {
        case Format::yuyv:
            return {.split = libyuv::YUY2ToI420};
        case Format::uyvy:
            return {.split = libyuv::UYVYToI420};
        case Format::yvyu:
            return {.split = libyuv::YUY2ToI420, .swapsChroma = true};
        case Format::rgb:
            return {.split = libyuv::ARGBToI420, .expand = libyuv::RAWToARGB};
        case Format::bgr:
            return {.split = libyuv::ARGBToI420, .expand = libyuv::RGB24ToARGB};
        case Format::rgbx:
            return {.split = libyuv::ABGRToI420};
        case Format::bgrx:
            return {.split = libyuv::ARGBToI420};
        case Format::xrgb:
            return {.split = libyuv::BGRAToI420};
        case Format::xbgr:
            return {.split = libyuv::RGBAToI420};
        default:
            return {};
    }
}

const std::uint8_t* plane(const AVVideoSourcePicture& picture, std::size_t index) {
    return reinterpret_cast<const std::uint8_t*>(picture.planes[index].data());
}

int stride(const AVVideoSourcePicture& picture, std::size_t index) {
    return static_cast<int>(picture.bytesPerRow[index]);
}

void copyBiPlanar(const AVVideoSourcePicture& from, const BiPlanarPicture& to) {
    libyuv::CopyPlane(plane(from, 0), stride(from, 0), to.luma, to.bytesPerRow, to.width, to.height);
    libyuv::CopyPlane(plane(from, 1), stride(from, 1), to.chroma, to.bytesPerRow, 2 * to.chromaWidth, to.chromaHeight);
}

void copySwapped(const AVVideoSourcePicture& from, const BiPlanarPicture& to) {
    libyuv::NV21ToNV12(plane(from, 0), stride(from, 0), plane(from, 1), stride(from, 1), to.luma, to.bytesPerRow,
                       to.chroma, to.bytesPerRow, to.width, to.height);
}

void mergePlanes(const AVVideoSourcePicture& from, std::size_t cb, std::size_t cr, const BiPlanarPicture& to) {
    libyuv::I420ToNV12(plane(from, 0), stride(from, 0), plane(from, cb), stride(from, cb), plane(from, cr),
                       stride(from, cr), to.luma, to.bytesPerRow, to.chroma, to.bytesPerRow, to.width, to.height);
}

void convertGray(const AVVideoSourcePicture& from, const BiPlanarPicture& to) {
    for (std::int32_t y = 0; y < to.height; ++y) {
        narrowLuma(plane(from, 0) + std::ptrdiff_t{stride(from, 0)} * y, to.lumaRow(y),
                   static_cast<std::size_t>(to.width));
    }
    libyuv::SetPlane(to.chroma, to.bytesPerRow, 2 * to.chromaWidth, to.chromaHeight, 128);
}

NSError cutOff() {
    return {AVFoundationErrorDomain,
            AVErrorUnknown,
            {"Unable to convert a picture: its memory is smaller than a picture of its size.", nullptr, {}}};
}

}  // namespace

RawVideoConverter::RawVideoConverter(AVVideoSourceFormat format, CMVideoDimensions size)
    : format_(format), size_(size) {
    const Packing packing = packingOf(format);
    const auto width = static_cast<std::size_t>(size.width);
    if (packing.split) {
        cb_.resize((width + 1) / 2);
        cr_.resize((width + 1) / 2);
    }
    if (packing.expand) {
        pixels_.resize(width * 4 * 2);
    }
}

void RawVideoConverter::convert(const AVVideoSourcePicture& from, CVPixelBuffer& to) {
    requireWhole(from);
    const BiPlanarPicture planes(to);
    switch (format_) {
        case Format::nv12:
            return copyBiPlanar(from, planes);
        case Format::nv21:
            return copySwapped(from, planes);
        case Format::i420:
            return mergePlanes(from, 1, 2, planes);
        case Format::yv12:
            return mergePlanes(from, 2, 1, planes);
        case Format::gray8:
            return convertGray(from, planes);
        default:
            return convertPacked(from, to);
    }
}

void RawVideoConverter::requireWhole(const AVVideoSourcePicture& picture) const {
    const std::array<AVVideoPlaneShape, 3> shapes = planeShapes(format_, size_);
    for (std::size_t index = 0; index < shapes.size(); ++index) {
        if (!shapes[index].isHeldBy(picture.planes[index].size(), picture.bytesPerRow[index])) {
            throw cutOff();
        }
    }
}

void RawVideoConverter::convertPacked(const AVVideoSourcePicture& from, CVPixelBuffer& to) {
    const Packing packing = packingOf(format_);
    const BiPlanarPicture planes(to);
    std::uint8_t* const cb = packing.swapsChroma ? cr_.data() : cb_.data();
    std::uint8_t* const cr = packing.swapsChroma ? cb_.data() : cr_.data();
    for (std::int32_t y = 0; y < planes.height; y += 2) {
        const std::int32_t rows = std::min(2, planes.height - y);
        const std::uint8_t* source = plane(from, 0) + std::ptrdiff_t{stride(from, 0)} * y;
        int sourceStride = stride(from, 0);
        if (packing.expand) {
            packing.expand(source, sourceStride, pixels_.data(), planes.width * 4, planes.width, rows);
            source = pixels_.data();
            sourceStride = planes.width * 4;
        }
        packing.split(source, sourceStride, planes.lumaRow(y), planes.bytesPerRow, cb, planes.chromaWidth, cr,
                      planes.chromaWidth, planes.width, rows);
        libyuv::MergeUVPlane(cb_.data(), planes.chromaWidth, cr_.data(), planes.chromaWidth, planes.chromaRow(y / 2),
                             planes.bytesPerRow, planes.chromaWidth, 1);
    }
}

}  // namespace zorvane
