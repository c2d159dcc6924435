#include "Zorvane/Platform/FFmpeg/JPEGVideoConverter.hpp"

#include <fmt/format.h>
#include <libyuv/planar_functions.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/BiPlanarPicture.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegError.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegLog.hpp"
#include "Zorvane/Platform/FFmpeg/VideoRange.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

namespace zorvane {
namespace {

NSError unusable(std::string reason) {
    return {AVFoundationErrorDomain,
            AVErrorUnknown,
            {fmt::format("Unable to decode a JPEG picture: {}.", reason), nullptr, {}}};
}

FFmpegHandle<AVCodecContext> makeDecoder(CMVideoDimensions size) {
    silenceFFmpegLog();
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
    if (!codec) {
        throw unusable("the FFmpeg libraries have no decoder");
    }
    FFmpegHandle<AVCodecContext> context(avcodec_alloc_context3(codec));
    if (!context) {
        throw std::bad_alloc();
    }
    constexpr std::int64_t rowAlignment = 64;  // the decoder's, up to which it counts
    context->max_pixels = (size.width + rowAlignment) * size.height;
    context->thread_count = 1;
    context->err_recognition = AV_EF_EXPLODE;  // a broken picture is left out, not mended
    context->log_level_offset = AV_LOG_TRACE;
    requireFFmpeg(avcodec_open2(context.get(), codec, nullptr), "open the JPEG decoder");
    return context;
}

/// The marker that ends a file; what lies behind it doesn't count.
bool hasEnd(std::span<const std::byte> file) {
    constexpr std::array end{std::byte{0xFF}, std::byte{0xD9}};
    return std::find_end(file.begin(), file.end(), end.begin(), end.end()) != file.end();
}

enum class Chroma : std::uint8_t { none, full, halfWidth, half };

Chroma chromaOf(const AVFrame& frame) {
    switch (frame.format) {
        case AV_PIX_FMT_GRAY8:
            return Chroma::none;
        case AV_PIX_FMT_YUV444P:
        case AV_PIX_FMT_YUVJ444P:
            return Chroma::full;
        case AV_PIX_FMT_YUV422P:
        case AV_PIX_FMT_YUVJ422P:
            return Chroma::halfWidth;
        case AV_PIX_FMT_YUV420P:
        case AV_PIX_FMT_YUVJ420P:
            return Chroma::half;
        default:
            throw unusable("its colors are of a kind that cameras don't give");
    }
}

const std::uint8_t* rowOf(const AVFrame& frame, int plane, std::int32_t y) {
    return frame.data[plane] + std::ptrdiff_t{frame.linesize[plane]} * y;
}

/// The upper and the lower row of a plane that make one of a plane of half its height.
struct RowPair {
    RowPair(const AVFrame& frame, int plane, std::int32_t y)
        : upper(rowOf(frame, plane, 2 * y)), distance(2 * y + 1 < frame.height ? frame.linesize[plane] : 0) {}

    const std::uint8_t* upper;
    int distance;  ///< to the lower row in bytes; 0 at an odd edge, where the upper one stands for it
};

/// `to` holds as many samples as a row of the picture's chroma.
void average(const RowPair& rows, std::vector<std::uint8_t>& to) {
    constexpr int evenly = 128;
    const auto width = static_cast<int>(to.size());
    libyuv::InterpolatePlane(rows.upper, width, rows.upper + rows.distance, width, to.data(), width, width, 1, evenly);
}

void mergeRow(const std::uint8_t* cb, const std::uint8_t* cr, const BiPlanarPicture& to, std::int32_t y) {
    libyuv::MergeUVPlane(cb, to.chromaWidth, cr, to.chromaWidth, to.chromaRow(y), to.bytesPerRow, to.chromaWidth, 1);
}

void mergeHalvedRow(const AVFrame& frame, const BiPlanarPicture& to, std::int32_t y) {
    const RowPair cb(frame, 1, y);
    const RowPair cr(frame, 2, y);
    libyuv::HalfMergeUVPlane(cb.upper, cb.distance, cr.upper, cr.distance, to.chromaRow(y), to.bytesPerRow, to.width,
                             cb.distance == 0 ? 1 : 2);
}

/// As nearly all files; a few say that they are of video range.
bool isFullRange(const AVFrame& frame) {
    return frame.color_range != AVCOL_RANGE_MPEG;
}

void storeLuma(const AVFrame& frame, const BiPlanarPicture& to) {
    const auto width = static_cast<std::size_t>(to.width);
    for (std::int32_t y = 0; y < to.height; ++y) {
        if (isFullRange(frame)) {
            narrowLuma(rowOf(frame, 0, y), to.lumaRow(y), width);
        } else {
            std::memcpy(to.lumaRow(y), rowOf(frame, 0, y), width);
        }
    }
}

}  // namespace

JPEGVideoConverter::JPEGVideoConverter(CMVideoDimensions size)
    : size_(size), context_(makeDecoder(size)), packet_(makePacket()), frame_(makeFrame()) {
    cb_.resize((static_cast<std::size_t>(size.width) + 1) / 2);
    cr_.resize(cb_.size());
}

void JPEGVideoConverter::convert(const AVVideoSourcePicture& from, CVPixelBuffer& to) {
    requireEnd(from.planes[0]);
    load(from.planes[0]);
    decode();
    requireSize();
    store(BiPlanarPicture(to));
    av_frame_unref(frame_.get());
}

void JPEGVideoConverter::store(const BiPlanarPicture& to) {
    const Chroma chroma = chromaOf(*frame_);
    storeLuma(*frame_, to);
    if (chroma == Chroma::none) {
        libyuv::SetPlane(to.chroma, to.bytesPerRow, 2 * to.chromaWidth, to.chromaHeight, 128);
        return;
    }
    for (std::int32_t y = 0; y < to.chromaHeight; ++y) {
        if (chroma == Chroma::full) {
            mergeHalvedRow(*frame_, to, y);
        } else if (chroma == Chroma::halfWidth) {
            average(RowPair(*frame_, 1, y), cb_);
            average(RowPair(*frame_, 2, y), cr_);
            mergeRow(cb_.data(), cr_.data(), to, y);
        } else {
            mergeRow(rowOf(*frame_, 1, y), rowOf(*frame_, 2, y), to, y);
        }
        if (isFullRange(*frame_)) {
            narrowChroma(to.chromaRow(y), to.chromaRow(y), 2 * static_cast<std::size_t>(to.chromaWidth));
        }
    }
}

// The decoder makes up what a file lacks at its end, and there are cameras that never give the marker.
void JPEGVideoConverter::requireEnd(std::span<const std::byte> file) {
    const bool isWhole = hasEnd(file);
    if (filesHaveEnd_ && !isWhole) {
        throw unusable("it is cut off");
    }
    filesHaveEnd_ = isWhole;
}

// The decoder reads beyond the end of what it is given.
void JPEGVideoConverter::load(std::span<const std::byte> file) {
    if (file.empty()) {
        throw unusable("it is empty");
    }
    if (file.size() > std::numeric_limits<int>::max() - AV_INPUT_BUFFER_PADDING_SIZE) {
        throw unusable("it is too large");
    }
    const auto size = static_cast<std::size_t>(packet_->buf ? packet_->buf->size : 0);
    if (size < file.size() + AV_INPUT_BUFFER_PADDING_SIZE) {
        av_packet_unref(packet_.get());
        // Hardly any file takes more than a byte for each pixel.
        const std::size_t capacity = std::max(file.size(), cb_.size() * 2 * static_cast<std::size_t>(size_.height));
        requireFFmpeg(av_new_packet(packet_.get(), static_cast<int>(capacity)), "allocate memory for JPEG pictures");
    }
    std::memcpy(packet_->data, file.data(), file.size());
    std::memset(packet_->data + file.size(), 0, AV_INPUT_BUFFER_PADDING_SIZE);
    packet_->size = static_cast<int>(file.size());
}

void JPEGVideoConverter::decode() {
    int result = avcodec_send_packet(context_.get(), packet_.get());
    if (result >= 0) {
        result = avcodec_receive_frame(context_.get(), frame_.get());
    }
    if (result < 0) {
        avcodec_flush_buffers(context_.get());
        throw result == AVERROR(EAGAIN) ? unusable("there is none") : ffmpegError(result, "decode a JPEG picture");
    }
}

void JPEGVideoConverter::requireSize() const {
    if (frame_->width != size_.width || frame_->height != size_.height) {
        throw unusable(fmt::format("it has {} x {} pixels and not {} x {}", frame_->width, frame_->height, size_.width,
                                   size_.height));
    }
}

}  // namespace zorvane
