// Owners of what the FFmpeg libraries allocate.
#pragma once

#include <memory>

struct AVCodecContext;
struct AVCodecParameters;
struct AVFormatContext;
struct AVFrame;
struct AVIOContext;
struct AVPacket;
struct SwrContext;

namespace zorvane {

/// Frees each with the function that its library prescribes.
struct FFmpegDeleter {
    void operator()(AVCodecContext* context) const;
    void operator()(AVCodecParameters* parameters) const;
    void operator()(AVFormatContext* context) const;
    void operator()(AVFrame* frame) const;
    void operator()(AVIOContext* context) const;  ///< with its buffer
    void operator()(AVPacket* packet) const;
    void operator()(SwrContext* context) const;
};

template <class T>
using FFmpegHandle = std::unique_ptr<T, FFmpegDeleter>;

/// New, empty objects. They throw `std::bad_alloc`.
FFmpegHandle<AVPacket> makePacket();
FFmpegHandle<AVFrame> makeFrame();
FFmpegHandle<AVCodecParameters> makeCodecParameters();

}  // namespace zorvane
