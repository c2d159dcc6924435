#include "tests/Support/TestPicture.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "Zorvane/Platform/Virtual/VirtualFrameCounter.hpp"

namespace zorvane {
namespace {

using enum AVVideoSourceFormat;

std::size_t bytesPerPixel(AVVideoSourceFormat format) {
    switch (format) {
        case yuyv:
        case uyvy:
        case yvyu:
            return 2;
        case rgb:
        case bgr:
            return 3;
        case rgbx:
        case bgrx:
        case xrgb:
        case xbgr:
            return 4;
        default:
            return 1;
    }
}

bool isPlanar420(AVVideoSourceFormat format) {
    return format == nv12 || format == nv21 || format == i420 || format == yv12;
}

std::byte clamped(double value) {
    return static_cast<std::byte>(std::clamp(std::lround(value), 0L, 255L));
}

/// In the video range, with the matrix of ITU-R BT.601.
struct RGB {
    explicit RGB(TestPicture::Colour colour) {
        const double luma = 1.164 * (colour.luma - 16);
        red = clamped(luma + 1.596 * (colour.cr - 128));
        green = clamped(luma - 0.813 * (colour.cr - 128) - 0.392 * (colour.cb - 128));
        blue = clamped(luma + 2.017 * (colour.cb - 128));
    }
    std::byte red, green, blue;
};

}  // namespace

class TestPicture::JPEGEncoder {
  public:
    JPEGEncoder(int width, int height) : context_(avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_MJPEG))) {
        context_->width = width;
        context_->height = height;
        context_->time_base = {1, 30};
        context_->pix_fmt = AV_PIX_FMT_YUVJ420P;
        context_->flags |= AV_CODEC_FLAG_QSCALE;
        context_->global_quality = FF_QP2LAMBDA * 3;
        if (avcodec_open2(context_, nullptr, nullptr) < 0) {
            throw std::runtime_error("there is no JPEG encoder");
        }
        frame_->format = context_->pix_fmt;
        frame_->width = width;
        frame_->height = height;
        frame_->quality = context_->global_quality;
        av_frame_get_buffer(frame_, 0);
    }
    JPEGEncoder(const JPEGEncoder&) = delete;
    JPEGEncoder& operator=(const JPEGEncoder&) = delete;
    ~JPEGEncoder() {
        av_packet_free(&packet_);
        av_frame_free(&frame_);
        avcodec_free_context(&context_);
    }

    /// `picture` is planar and of the video range; JPEGs are of the full one.
    std::size_t encode(const std::byte* picture, std::span<std::byte> to) {
        av_frame_make_writable(frame_);
        for (int plane = 0; plane < 3; ++plane) {
            const int columns = plane == 0 ? frame_->width : frame_->width / 2;
            const int rows = plane == 0 ? frame_->height : frame_->height / 2;
            for (int y = 0; y < rows; ++y) {
                for (int x = 0; x < columns; ++x) {
                    const int value = std::to_integer<int>(*picture++);
                    frame_->data[plane][y * frame_->linesize[plane] + x] = static_cast<std::uint8_t>(
                        plane == 0 ? (value - 16) * 255 / 219 : (value - 128) * 255 / 224 + 128);
                }
            }
        }
        if (avcodec_send_frame(context_, frame_) < 0 || avcodec_receive_packet(context_, packet_) < 0) {
            throw std::runtime_error("a JPEG can't be made");
        }
        const std::size_t size = std::min(to.size(), static_cast<std::size_t>(packet_->size));
        std::memcpy(to.data(), packet_->data, size);
        av_packet_unref(packet_);
        return size;
    }

  private:
    AVCodecContext* context_;
    AVFrame* frame_ = av_frame_alloc();
    AVPacket* packet_ = av_packet_alloc();
};

TestPicture::TestPicture(AVVideoSourceFormat format, CMVideoDimensions size)
    : format_(format == jpeg ? i420 : format),
      width_(static_cast<std::size_t>(size.width)),
      height_(static_cast<std::size_t>(size.height)),
      byteSize_(isPlanar420(format_) ? width_ * height_ * 3 / 2 : width_ * height_ * bytesPerPixel(format_)),
      bytesPerRow_(format == jpeg ? 0 : width_ * bytesPerPixel(format_)) {
    fill(normal_, lowerHalf);
    fill(bright_, flash);
    if (format == jpeg) {
        encoder_ = std::make_unique<JPEGEncoder>(size.width, size.height);
    }
}

TestPicture::~TestPicture() = default;

void TestPicture::fill(std::vector<std::byte>& picture, Colour colour) const {
    picture.assign(byteSize_, std::byte{});
    for (std::size_t y = 0; y < height_; ++y) {
        for (std::size_t x = 0; x < width_; ++x) {
            setPixel(picture.data(), x, y, y < height_ / 2 ? Colour{.luma = 16} : colour);
        }
    }
}

void TestPicture::setPixel(std::byte* picture, std::size_t x, std::size_t y, Colour colour) const {
    const auto byte = [](std::uint8_t value) { return static_cast<std::byte>(value); };
    std::byte* pixel = picture + (y * width_ + x) * bytesPerPixel(format_);
    const bool isEven = x % 2 == 0;
    if (isPlanar420(format_)) {
        *pixel = byte(colour.luma);
        std::byte* chroma = picture + width_ * height_;
        if (format_ == nv12 || format_ == nv21) {
            std::byte* pair = chroma + y / 2 * width_ + x / 2 * 2;
            pair[format_ == nv12 ? 0 : 1] = byte(colour.cb);
            pair[format_ == nv12 ? 1 : 0] = byte(colour.cr);
        } else {
            const std::size_t plane = width_ / 2 * (height_ / 2);
            chroma += y / 2 * (width_ / 2) + x / 2;
            chroma[format_ == i420 ? 0 : plane] = byte(colour.cb);
            chroma[format_ == i420 ? plane : 0] = byte(colour.cr);
        }
        return;
    }
    const RGB light(colour);
    const auto put = [pixel](std::initializer_list<std::byte> bytes) { std::ranges::copy(bytes, pixel); };
    switch (format_) {
        case yuyv:
            return put({byte(colour.luma), byte(isEven ? colour.cb : colour.cr)});
        case yvyu:
            return put({byte(colour.luma), byte(isEven ? colour.cr : colour.cb)});
        case uyvy:
            return put({byte(isEven ? colour.cb : colour.cr), byte(colour.luma)});
        case rgb:
        case rgbx:
            return put({light.red, light.green, light.blue});
        case bgr:
        case bgrx:
            return put({light.blue, light.green, light.red});
        case xrgb:
            return put({{}, light.red, light.green, light.blue});
        case xbgr:
            return put({{}, light.blue, light.green, light.red});
        default:
            return put({byte(colour.luma)});
    }
}

std::size_t TestPicture::draw(std::span<std::byte> to, std::uint32_t number, bool isFlash) {
    std::vector<std::byte>& picture = isFlash ? bright_ : normal_;
    forEachCounterCell(number, [&](const VirtualCounterCell& cell) {
        const Colour colour{.luma = static_cast<std::uint8_t>(cell.isWhite ? 235 : 16)};
        for (std::int32_t y = cell.y; y < cell.y + cell.size; ++y) {
            for (std::int32_t x = cell.x; x < cell.x + cell.size; ++x) {
                setPixel(picture.data(), static_cast<std::size_t>(x), static_cast<std::size_t>(y), colour);
            }
        }
    });
    if (encoder_) {
        return encoder_->encode(picture.data(), to);
    }
    const std::size_t size = std::min(to.size(), picture.size());
    std::memcpy(to.data(), picture.data(), size);
    return size;
}

bool TestPicture::isFlash(const CVPixelBuffer& picture) {
    const CVPixelLayout& layout = picture.layout();
    const std::size_t row = static_cast<std::size_t>(layout.height) * 3 / 4;
    return std::to_integer<int>(picture.bytes()[row * layout.bytesPerRow + layout.bytesPerRow / 2]) > 200;
}

int TestPicture::colourError(const CVPixelBuffer& picture) {
    const CVPixelLayout& layout = picture.layout();
    const std::size_t row = static_cast<std::size_t>(layout.height) * 3 / 4;
    const std::size_t column = static_cast<std::size_t>(layout.width) / 4 * 2;
    const std::byte* luma = picture.bytes() + row * layout.bytesPerRow + column;
    const std::byte* chroma = picture.bytes() + layout.chromaOffset() + row / 2 * layout.bytesPerRow + column;
    const auto error = [](std::byte is, int wanted) { return std::abs(std::to_integer<int>(is) - wanted); };
    return std::max({error(*luma, lowerHalf.luma), error(chroma[0], lowerHalf.cb), error(chroma[1], lowerHalf.cr)});
}

}  // namespace zorvane
