#include "Zorvane/Platform/FFmpeg/VideoEncoder.hpp"

#include <fmt/format.h>

#include <new>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/EncoderOptions.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegError.hpp"
#include "Zorvane/Platform/FFmpeg/VideoTimeline.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixdesc.h>
}

namespace zorvane {
namespace {

const AVCodec& encoderNamed(const std::string& name) {
    const AVCodec* const codec = avcodec_find_encoder_by_name(name.c_str());
    if (!codec) {
        throw NSError(
            AVFoundationErrorDomain, AVErrorEncoderNotFound,
            {fmt::format("The video encoder {} is missing. Install FFmpeg libraries that were built with it.", name),
             nullptr,
             {}});
    }
    return *codec;
}

std::string describe(const AVVideoSettings& settings, const std::string& encoderName) {
    return fmt::format("encode video of {} x {} pixels with {}", settings.width, settings.height, encoderName);
}

}  // namespace

VideoEncoder::VideoEncoder(const AVVideoSettings& settings, const std::string& encoderName)
    : width_(settings.width), height_(settings.height) {
    const AVCodec& codec = encoderNamed(encoderName);
    context_.reset(avcodec_alloc_context3(&codec));
    if (!context_) {
        throw std::bad_alloc();
    }
    applyVideoSettings(settings, *context_);
    AVDictionary* options = makeEncoderOptions(settings, *context_);
    const int result = avcodec_open2(context_.get(), &codec, &options);
    av_dict_free(&options);
    requireFFmpeg(result, describe(settings, encoderName));
    allocatePicture();
}

void VideoEncoder::allocatePicture() {
    frame_ = makeFrame();
    frame_->format = context_->pix_fmt;
    frame_->width = context_->width;
    frame_->height = context_->height;
    frame_->color_range = context_->color_range;
    frame_->color_primaries = context_->color_primaries;
    frame_->color_trc = context_->color_trc;
    frame_->colorspace = context_->colorspace;
    frame_->chroma_location = context_->chroma_sample_location;
    requireFFmpeg(av_frame_get_buffer(frame_.get(), 0), "allocate a picture");
}

PlanarPicture VideoEncoder::picture() const {
    PlanarPicture picture{frame_->width, frame_->height, 8, {}, {}};
    picture.bitDepth = av_pix_fmt_desc_get(context_->pix_fmt)->comp[0].depth;
    for (std::size_t plane = 0; plane < picture.planes.size(); ++plane) {
        picture.planes[plane] = reinterpret_cast<std::byte*>(frame_->data[plane]);
        picture.bytesPerRow[plane] = frame_->linesize[plane];
    }
    return picture;
}

void VideoEncoder::encode(std::int64_t tick, PictureKind kind) {
    frame_->pts = tick;
    frame_->pict_type = kind == PictureKind::key ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    requireFFmpeg(avcodec_send_frame(context_.get(), frame_.get()), "encode a picture");
}

void VideoEncoder::drain() {
    requireFFmpeg(avcodec_send_frame(context_.get(), nullptr), "end the encoding");
}

bool VideoEncoder::receive(AVPacket& packet) {
    const int result = avcodec_receive_packet(context_.get(), &packet);
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
        return false;
    }
    requireFFmpeg(result, "encode a picture");
    packet.dts = packet.pts;
    return true;
}

FFmpegHandle<AVCodecParameters> VideoEncoder::codecParameters() const {
    auto parameters = makeCodecParameters();
    requireFFmpeg(avcodec_parameters_from_context(parameters.get(), context_.get()), "describe the video");
    parameters->width = width_;
    parameters->height = height_;
    return parameters;
}

}  // namespace zorvane
