// A camera's picture of 1920 x 1080 into '420v' on one thread, beside swscale with the same thing to do; JPEG is
// decoded by libavcodec on both sides.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

#include "Zorvane/Platform/FFmpeg/FFmpegVideoConverter.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

namespace zorvane {
namespace {

constexpr int width = 1920;
constexpr int height = 1080;

struct Deleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};

template <class T>
using Owned = std::unique_ptr<T, Deleter>;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// Slopes with noise, as a camera gives.
std::uint8_t level(int x, int y, std::mt19937& random) {
    return static_cast<std::uint8_t>(40 + (x / 16 + y / 8) % 160 + static_cast<int>(random() % 8));
}

Owned<AVFrame> makeFrame(AVPixelFormat format) {
    Owned<AVFrame> frame(av_frame_alloc());
    frame->format = format;
    frame->width = width;
    frame->height = height;
    require(av_frame_get_buffer(frame.get(), 0) >= 0);
    std::mt19937 random(1);
    for (int plane = 0; plane < 3 && frame->data[plane]; ++plane) {
        const bool isHalfHeight = plane > 0 && format == AV_PIX_FMT_NV12;
        for (int y = 0; y < (isHalfHeight ? height / 2 : height); ++y) {
            for (int x = 0; x < frame->linesize[plane]; ++x) {
                frame->data[plane][y * frame->linesize[plane] + x] = level(x, y, random);
            }
        }
    }
    return frame;
}

/// As most cameras make it, of 4:2:2.
Owned<AVPacket> makeJPEG() {
    const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    const Owned<AVCodecContext> encoder(avcodec_alloc_context3(codec));
    encoder->width = width;
    encoder->height = height;
    encoder->pix_fmt = AV_PIX_FMT_YUVJ422P;
    encoder->time_base = {1, 30};
    encoder->flags |= AV_CODEC_FLAG_QSCALE;
    encoder->global_quality = 4 * FF_QP2LAMBDA;
    require(avcodec_open2(encoder.get(), codec, nullptr) >= 0);
    const Owned<AVFrame> frame = makeFrame(AV_PIX_FMT_YUVJ422P);
    frame->quality = encoder->global_quality;
    frame->pts = 0;
    Owned<AVPacket> packet(av_packet_alloc());
    require(avcodec_send_frame(encoder.get(), frame.get()) >= 0);
    require(avcodec_receive_packet(encoder.get(), packet.get()) >= 0);
    return packet;
}

CVPixelBufferRef makeDestination() {
    return CVPixelBufferPool::make({width, height, width, CVPixelFormat::yCbCr420VideoRange}, 1)->take();
}

void countPictures(benchmark::State& state) {
    state.counters["pictures"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void convert(benchmark::State& state, AVVideoSourceFormat format, const AVVideoSourcePicture& picture) {
    const CVPixelBufferRef to = makeDestination();
    const auto converter = FFmpegVideoConverting().makeConverter(format, {width, height});
    for (auto iteration : state) {
        converter->convert(picture, *to);
        benchmark::ClobberMemory();
    }
    countPictures(state);
}

AVVideoSourcePicture pictureOf(const AVFrame& frame, int planes) {
    AVVideoSourcePicture picture;
    for (int index = 0; index < planes; ++index) {
        const auto plane = static_cast<std::size_t>(index);
        const int rows = index == 0 ? height : height / 2;
        picture.bytesPerRow[plane] = static_cast<std::size_t>(frame.linesize[index]);
        picture.planes[plane] = {reinterpret_cast<const std::byte*>(frame.data[index]),
                                 picture.bytesPerRow[plane] * static_cast<std::size_t>(rows)};
    }
    return picture;
}

/// swscale as it converts when it is asked for nothing special; the size stays.
class Swscale {
  public:
    explicit Swscale(AVPixelFormat from)
        : context_(sws_getContext(width, height, from, width, height, AV_PIX_FMT_NV12, SWS_BILINEAR, nullptr, nullptr,
                                  nullptr)) {
        require(context_ != nullptr);
    }

    void convert(const AVFrame& from) {
        auto* const luma = reinterpret_cast<std::uint8_t*>(to_->mutableBytes());
        std::uint8_t* const planes[] = {luma, luma + to_->layout().chromaOffset()};
        const int strides[] = {width, width};
        sws_scale(context_.get(), from.data, from.linesize, 0, height, planes, strides);
        benchmark::ClobberMemory();
    }

  private:
    const Owned<SwsContext> context_;
    const CVPixelBufferRef to_ = makeDestination();
};

void swscale(benchmark::State& state, AVPixelFormat format) {
    const Owned<AVFrame> frame = makeFrame(format);
    Swscale swscale(format);
    for (auto iteration : state) {
        swscale.convert(*frame);
    }
    countPictures(state);
}

void BM_YUYV(benchmark::State& state) {
    const Owned<AVFrame> frame = makeFrame(AV_PIX_FMT_YUYV422);
    convert(state, AVVideoSourceFormat::yuyv, pictureOf(*frame, 1));
}

void BM_YUYVBySwscale(benchmark::State& state) {
    swscale(state, AV_PIX_FMT_YUYV422);
}

void BM_NV12(benchmark::State& state) {
    const Owned<AVFrame> frame = makeFrame(AV_PIX_FMT_NV12);
    convert(state, AVVideoSourceFormat::nv12, pictureOf(*frame, 2));
}

void BM_NV12BySwscale(benchmark::State& state) {
    swscale(state, AV_PIX_FMT_NV12);
}

void BM_RGB(benchmark::State& state) {
    const Owned<AVFrame> frame = makeFrame(AV_PIX_FMT_RGB24);
    convert(state, AVVideoSourceFormat::rgb, pictureOf(*frame, 1));
}

void BM_RGBBySwscale(benchmark::State& state) {
    swscale(state, AV_PIX_FMT_RGB24);
}

void BM_JPEG(benchmark::State& state) {
    const Owned<AVPacket> file = makeJPEG();
    AVVideoSourcePicture picture;
    picture.planes[0] = {reinterpret_cast<const std::byte*>(file->data), static_cast<std::size_t>(file->size)};
    convert(state, AVVideoSourceFormat::jpeg, picture);
    state.counters["bytes"] = file->size;
}

void BM_JPEGBySwscale(benchmark::State& state) {
    const Owned<AVPacket> file = makeJPEG();
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
    const Owned<AVCodecContext> decoder(avcodec_alloc_context3(codec));
    decoder->thread_count = 1;
    require(avcodec_open2(decoder.get(), codec, nullptr) >= 0);
    const Owned<AVFrame> frame(av_frame_alloc());
    Swscale swscale(AV_PIX_FMT_YUVJ422P);
    for (auto iteration : state) {
        require(avcodec_send_packet(decoder.get(), file.get()) >= 0);
        require(avcodec_receive_frame(decoder.get(), frame.get()) >= 0);
        swscale.convert(*frame);
    }
    countPictures(state);
}

BENCHMARK(BM_YUYV)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_YUYVBySwscale)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NV12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NV12BySwscale)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RGB)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RGBBySwscale)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_JPEG)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_JPEGBySwscale)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zorvane
