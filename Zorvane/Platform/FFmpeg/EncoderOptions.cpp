#include "Zorvane/Platform/FFmpeg/EncoderOptions.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <thread>

#include "Zorvane/Platform/FFmpeg/VideoTimeline.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/dict.h>
}

namespace zorvane {
namespace {

constexpr std::int32_t evenUp(std::int32_t length) {
    return length + length % 2;
}

/// A thread per two megapixels keeps up with 60 pictures a second; more cost memory and sharpness (each thread's slice
/// stands alone), and take the processor from what is being recorded.
int threadCount(const AVVideoSettings& settings) {
    const int wanted = 1 + settings.width * settings.height / 2'000'000;
    const int available = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    return std::clamp(wanted, 1, std::min(available, 8));
}

AVColorPrimaries colorPrimaries(AVVideoColorPrimaries primaries) {
    return primaries == AVVideoColorPrimaries::p3D65 ? AVCOL_PRI_SMPTE432 : AVCOL_PRI_BT709;
}

class Options {
  public:
    void set(const char* key, const std::string& value) { av_dict_set(&dictionary_, key, value.c_str(), 0); }
    void set(const char* key, double value) { set(key, fmt::format("{}", value)); }
    AVDictionary* release() const { return dictionary_; }

  private:
    AVDictionary* dictionary_ = nullptr;
};

void addX264Options(const AVVideoCompressionProperties& compression, Options& options) {
    const bool isRealTime = compression.effort == AVVideoEncodingEffort::realTime;
    options.set("preset", isRealTime ? "ultrafast" : "veryfast");
    options.set("tune", "zerolatency");
    options.set("profile", "high");
    options.set("forced-idr", "1");
    if (compression.constantQuality) {
        options.set("crf", *compression.constantQuality);
    }
}

void addX265Options(const AVVideoCompressionProperties& compression, int threads, Options& options) {
    const bool isRealTime = compression.effort == AVVideoEncodingEffort::realTime;
    options.set("preset", isRealTime ? "ultrafast" : "veryfast");
    options.set("tune", "zerolatency");
    options.set("forced-idr", "1");
    options.set("x265-params", fmt::format("log-level=none:pools={}:frame-threads=1", threads));
    if (compression.constantQuality) {
        options.set("crf", *compression.constantQuality);
    }
}

}  // namespace

void applyVideoSettings(const AVVideoSettings& settings, AVCodecContext& context) {
    context.width = evenUp(settings.width);
    context.height = evenUp(settings.height);
    context.pix_fmt = settings.codec == CMVideoCodecType::hevc ? AV_PIX_FMT_YUV420P10 : AV_PIX_FMT_YUV420P;
    context.sample_aspect_ratio = {1, 1};
    context.time_base = {1, videoTimescale};
    context.color_range = AVCOL_RANGE_MPEG;
    context.color_primaries = colorPrimaries(settings.colorProperties.primaries);
    context.color_trc = AVCOL_TRC_BT709;
    context.colorspace = AVCOL_SPC_BT709;
    context.chroma_sample_location = AVCHROMA_LOC_CENTER;
    context.max_b_frames = 0;
    context.thread_count = threadCount(settings);
    context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;  // the parameter sets go into the index, not into each key frame
    context.log_level_offset = AV_LOG_TRACE;       // this library doesn't print; errors are returned
}

AVDictionary* makeEncoderOptions(const AVVideoSettings& settings, const AVCodecContext& context) {
    Options options;
    const std::string_view name = context.codec->name;
    if (name == "libx264") {
        addX264Options(settings.compressionProperties, options);
    } else if (name == "libx265") {
        addX265Options(settings.compressionProperties, context.thread_count, options);
    }
    return options.release();
}

}  // namespace zorvane
