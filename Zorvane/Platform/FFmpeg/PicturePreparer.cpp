#include "Zorvane/Platform/FFmpeg/PicturePreparer.hpp"

#include <libyuv/planar_functions.h>
#include <libyuv/scale.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/PictureFit.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

std::int32_t half(std::int32_t length) {
    return (length + 1) / 2;
}

std::ptrdiff_t sampleSize(const PlanarPicture& picture) {
    return picture.bitDepth > 8 ? 2 : 1;
}

/// The same memory, of which less is shown.
PlanarPicture cropped(PlanarPicture picture, const PicturePlace& place) {
    for (std::size_t plane = 0; plane < picture.planes.size(); ++plane) {
        const std::int32_t step = plane == 0 ? 1 : 2;
        picture.planes[plane] += picture.bytesPerRow[plane] * (place.y / step) + sampleSize(picture) * (place.x / step);
    }
    picture.width = place.width;
    picture.height = place.height;
    return picture;
}

template <class Byte>
struct Plane {
    Byte* bytes;
    std::ptrdiff_t bytesPerRow;
    std::int32_t width;
    std::int32_t height;

    template <class Sample>
    auto samples() const {
        return reinterpret_cast<std::conditional_t<std::is_const_v<Byte>, const Sample, Sample>*>(bytes);
    }
    template <class Sample>
    int stride() const {
        return static_cast<int>(bytesPerRow / static_cast<std::ptrdiff_t>(sizeof(Sample)));
    }
};

Plane<std::byte> planeOf(const PlanarPicture& picture, std::size_t index) {
    const bool isLuma = index == 0;
    return {picture.planes[index], picture.bytesPerRow[index], isLuma ? picture.width : half(picture.width),
            isLuma ? picture.height : half(picture.height)};
}

Plane<const std::byte> lumaOf(const CVPixelBuffer& picture) {
    const CVPixelLayout& layout = picture.layout();
    return {picture.bytes(), static_cast<std::ptrdiff_t>(layout.bytesPerRow), layout.width, layout.height};
}

Plane<const std::byte> readable(const Plane<std::byte>& plane) {
    return {plane.bytes, plane.bytesPerRow, plane.width, plane.height};
}

template <class Sample, class Function>
void scaleWith(Function function, const Plane<const std::byte>& from, const Plane<std::byte>& to) {
    function(from.samples<Sample>(), from.stride<Sample>(), from.width, from.height, to.samples<Sample>(),
             to.stride<Sample>(), to.width, to.height, libyuv::kFilterBox);
}

void scale(const Plane<const std::byte>& from, const Plane<std::byte>& to, std::int32_t bitDepth) {
    if (bitDepth > 8) {
        scaleWith<std::uint16_t>(libyuv::ScalePlane_16, from, to);
    } else {
        scaleWith<std::uint8_t>(libyuv::ScalePlane, from, to);
    }
}

void copy(const Plane<const std::byte>& from, const Plane<std::byte>& to) {
    using Sample = std::uint8_t;
    libyuv::CopyPlane(from.samples<Sample>(), from.stride<Sample>(), to.samples<Sample>(), to.stride<Sample>(),
                      to.width, to.height);
}

void splitChroma(const CVPixelBuffer& picture, const PlanarPicture& to) {
    using Sample = std::uint8_t;
    const Plane<std::byte> cb = planeOf(to, 1);
    const Plane<std::byte> cr = planeOf(to, 2);
    libyuv::SplitUVPlane(reinterpret_cast<const Sample*>(picture.bytes() + picture.layout().chromaOffset()),
                         static_cast<int>(picture.layout().bytesPerRow), cb.samples<Sample>(), cb.stride<Sample>(),
                         cr.samples<Sample>(), cr.stride<Sample>(), cb.width, cb.height);
}

template <class Sample>
void fill(const Plane<std::byte>& plane, std::int32_t value) {
    for (std::int32_t y = 0; y < plane.height; ++y) {
        auto* const row = reinterpret_cast<Sample*>(plane.bytes + plane.bytesPerRow * y);
        std::fill_n(row, plane.width, static_cast<Sample>(value));
    }
}

NSError colorsDiffer() {
    return {AVFoundationErrorDomain,
            AVErrorUnknown,
            {"Pictures of '420v' need a video without color properties, and others one with them.", nullptr, {}}};
}

}  // namespace

PicturePreparer::Planes::Planes(std::int32_t width, std::int32_t height, std::int32_t bitDepth)
    : picture_{width, height, bitDepth, {}, {}} {
    constexpr std::ptrdiff_t alignment = 64;
    const auto rowBytes = [&](std::int32_t samplesPerRow) {
        return (samplesPerRow * sampleSize(picture_) + alignment - 1) / alignment * alignment;
    };
    picture_.bytesPerRow = {rowBytes(width), rowBytes(half(width)), rowBytes(half(width))};
    const std::ptrdiff_t luma = picture_.bytesPerRow[0] * height;
    const std::ptrdiff_t chroma = picture_.bytesPerRow[1] * half(height);
    memory_.resize(static_cast<std::size_t>(luma + 2 * chroma));
    picture_.planes = {memory_.data(), memory_.data() + luma, memory_.data() + luma + chroma};
}

PicturePreparer::PicturePreparer(const PlanarPicture& destination, std::int32_t width, std::int32_t height,
                                 const std::optional<AVVideoColorProperties>& colors)
    : coded_(destination), visible_(cropped(destination, {0, 0, width, height})), colors_(colors) {}

void PicturePreparer::prepare(const CVPixelBufferRef& picture) {
    if (picture == last_) {
        return;
    }
    last_ = {};  // may be the pool's last free picture
    setUpFor(picture->layout());
    if (converter_) {
        convert(*picture);
    } else {
        unpack(*picture);
    }
    fillBorder();
    last_ = picture;
}

void PicturePreparer::setUpFor(const CVPixelLayout& layout) {
    if (layout_ == layout) {
        return;
    }
    layout_.reset();  // until all is set up for the new one
    setUpConverter(layout);
    const PicturePlace place = placeOfPicture({layout.width, layout.height}, {visible_.width, visible_.height});
    place_ = cropped(visible_, place);
    if (place.width != visible_.width || place.height != visible_.height) {
        fillBlack();
    }
    unscaled_.reset();
    if (layout.width != place.width || layout.height != place.height) {
        unscaled_.emplace(layout.width, layout.height, coded_.bitDepth);
    }
    layout_ = layout;
}

void PicturePreparer::setUpConverter(const CVPixelLayout& layout) {
    if (layout.isBiPlanar() == colors_.has_value()) {
        throw colorsDiffer();
    }
    if (!colors_) {
        return;
    }
    const ColorConversion conversion{layout.format, layout.colorSpace, colors_->primaries, coded_.bitDepth};
    if (!converter_ || converter_->conversion() != conversion) {
        converter_.emplace(conversion);
    }
}

void PicturePreparer::fillBlack() const {
    for (std::size_t plane = 0; plane < coded_.planes.size(); ++plane) {
        const std::int32_t value = (plane == 0 ? 16 : 128) << (coded_.bitDepth - 8);
        if (coded_.bitDepth > 8) {
            fill<std::uint16_t>(planeOf(coded_, plane), value);
        } else {
            fill<std::uint8_t>(planeOf(coded_, plane), value);
        }
    }
}

void PicturePreparer::convert(const CVPixelBuffer& picture) {
    converter_->convert(picture, unscaled_ ? unscaled_->picture() : place_);
    for (std::size_t plane = 0; unscaled_ && plane < coded_.planes.size(); ++plane) {
        scale(readable(planeOf(unscaled_->picture(), plane)), planeOf(place_, plane), coded_.bitDepth);
    }
}

// Luma is scaled where it lies.
void PicturePreparer::unpack(const CVPixelBuffer& picture) {
    if (!unscaled_) {
        copy(lumaOf(picture), planeOf(place_, 0));
        splitChroma(picture, place_);
        return;
    }
    scale(lumaOf(picture), planeOf(place_, 0), coded_.bitDepth);
    splitChroma(picture, unscaled_->picture());
    for (const std::size_t plane : {1, 2}) {
        scale(readable(planeOf(unscaled_->picture(), plane)), planeOf(place_, plane), coded_.bitDepth);
    }
}

// Only luma can be short of a column or a row: the size of a chroma plane is rounded up.
void PicturePreparer::fillBorder() const {
    const std::ptrdiff_t size = sampleSize(coded_);
    const std::ptrdiff_t rowBytes = coded_.bytesPerRow[0];
    std::byte* const luma = coded_.planes[0];
    if (coded_.width > visible_.width) {
        for (std::int32_t y = 0; y < visible_.height; ++y) {
            std::byte* const end = luma + rowBytes * y + size * visible_.width;
            std::memcpy(end, end - size, static_cast<std::size_t>(size));
        }
    }
    if (coded_.height > visible_.height) {
        std::byte* const end = luma + rowBytes * visible_.height;
        std::memcpy(end, end - rowBytes, static_cast<std::size_t>(size * coded_.width));
    }
}

}  // namespace zorvane
