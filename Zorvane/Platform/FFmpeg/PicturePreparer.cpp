#include "Zorvane/Platform/FFmpeg/PicturePreparer.hpp"

#include <libyuv/scale.h>

#include <cstring>
#include <utility>

namespace zorvane {
namespace {

PlanarPicture cropped(PlanarPicture picture, std::int32_t width, std::int32_t height) {
    picture.width = width;
    picture.height = height;
    return picture;
}

std::int32_t half(std::int32_t length) {
    return (length + 1) / 2;
}

template <class Sample>
Sample* samples(const PlanarPicture& picture, std::size_t plane) {
    return reinterpret_cast<Sample*>(picture.planes[plane]);
}

template <class Sample>
int stride(const PlanarPicture& picture, std::size_t plane) {
    return static_cast<int>(picture.bytesPerRow[plane] / static_cast<std::ptrdiff_t>(sizeof(Sample)));
}

template <class Sample, class Function>
void scaleWith(Function function, const PlanarPicture& from, const PlanarPicture& to) {
    function(samples<Sample>(from, 0), stride<Sample>(from, 0), samples<Sample>(from, 1), stride<Sample>(from, 1),
             samples<Sample>(from, 2), stride<Sample>(from, 2), from.width, from.height, samples<Sample>(to, 0),
             stride<Sample>(to, 0), samples<Sample>(to, 1), stride<Sample>(to, 1), samples<Sample>(to, 2),
             stride<Sample>(to, 2), to.width, to.height, libyuv::kFilterBox);
}

}  // namespace

PicturePreparer::Planes::Planes(std::int32_t width, std::int32_t height, std::int32_t bitDepth)
    : picture_{width, height, bitDepth, {}, {}} {
    constexpr std::ptrdiff_t alignment = 64;
    const std::ptrdiff_t sampleSize = bitDepth > 8 ? 2 : 1;
    const auto rowBytes = [&](std::int32_t samplesPerRow) {
        return (samplesPerRow * sampleSize + alignment - 1) / alignment * alignment;
    };
    picture_.bytesPerRow = {rowBytes(width), rowBytes(half(width)), rowBytes(half(width))};
    const std::ptrdiff_t luma = picture_.bytesPerRow[0] * height;
    const std::ptrdiff_t chroma = picture_.bytesPerRow[1] * half(height);
    memory_.resize(static_cast<std::size_t>(luma + 2 * chroma));
    picture_.planes = {memory_.data(), memory_.data() + luma, memory_.data() + luma + chroma};
}

PicturePreparer::PicturePreparer(const PlanarPicture& destination, std::int32_t width, std::int32_t height,
                                 AVVideoColorPrimaries primaries)
    : coded_(destination), visible_(cropped(destination, width, height)), primaries_(primaries) {}

void PicturePreparer::prepare(const CVPixelBufferRef& picture) {
    if (picture == last_) {
        return;
    }
    last_ = {};  // may be the pool's last free picture
    setUpFor(picture->layout());
    if (unscaled_) {
        converter_->convert(*picture, unscaled_->picture());
        scale(unscaled_->picture());
    } else {
        converter_->convert(*picture, visible_);
    }
    fillBorder();
    last_ = picture;
}

void PicturePreparer::setUpFor(const CVPixelLayout& layout) {
    if (layout_ == layout) {
        return;
    }
    const ColorConversion conversion{layout.format, layout.colorSpace, primaries_, coded_.bitDepth};
    if (!converter_ || converter_->conversion() != conversion) {
        converter_.emplace(conversion);
    }
    unscaled_.reset();
    if (layout.width != visible_.width || layout.height != visible_.height) {
        unscaled_.emplace(layout.width, layout.height, coded_.bitDepth);
    }
    layout_ = layout;
}

void PicturePreparer::scale(const PlanarPicture& source) const {
    if (coded_.bitDepth > 8) {
        scaleWith<std::uint16_t>(libyuv::I420Scale_16, source, visible_);
    } else {
        scaleWith<std::uint8_t>(libyuv::I420Scale, source, visible_);
    }
}

// Only luma can be short of a column or a row: the size of a chroma plane is rounded up.
void PicturePreparer::fillBorder() const {
    const std::ptrdiff_t sampleSize = coded_.bitDepth > 8 ? 2 : 1;
    const std::ptrdiff_t rowBytes = coded_.bytesPerRow[0];
    std::byte* const luma = coded_.planes[0];
    if (coded_.width > visible_.width) {
        for (std::int32_t y = 0; y < visible_.height; ++y) {
            std::byte* const end = luma + rowBytes * y + sampleSize * visible_.width;
            std::memcpy(end, end - sampleSize, static_cast<std::size_t>(sampleSize));
        }
    }
    if (coded_.height > visible_.height) {
        std::byte* const end = luma + rowBytes * visible_.height;
        std::memcpy(end, end - rowBytes, static_cast<std::size_t>(sampleSize * coded_.width));
    }
}

}  // namespace zorvane
