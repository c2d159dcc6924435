#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"

#include <new>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

namespace zorvane {
namespace {

template <class T>
FFmpegHandle<T> owned(T* object) {
    if (!object) {
        throw std::bad_alloc();
    }
    return FFmpegHandle<T>(object);
}

}  // namespace

void FFmpegDeleter::operator()(AVCodecContext* context) const {
    avcodec_free_context(&context);
}

void FFmpegDeleter::operator()(AVCodecParameters* parameters) const {
    avcodec_parameters_free(&parameters);
}

void FFmpegDeleter::operator()(AVFormatContext* context) const {
    avformat_free_context(context);
}

void FFmpegDeleter::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}

void FFmpegDeleter::operator()(AVIOContext* context) const {
    av_freep(&context->buffer);  // not the one it was made with, if it has grown
    avio_context_free(&context);
}

void FFmpegDeleter::operator()(AVPacket* packet) const {
    av_packet_free(&packet);
}

void FFmpegDeleter::operator()(SwrContext* context) const {
    swr_free(&context);
}

FFmpegHandle<AVPacket> makePacket() {
    return owned(av_packet_alloc());
}

FFmpegHandle<AVFrame> makeFrame() {
    return owned(av_frame_alloc());
}

FFmpegHandle<AVCodecParameters> makeCodecParameters() {
    return owned(avcodec_parameters_alloc());
}

}  // namespace zorvane
