#include "Zorvane/Platform/FFmpeg/EncoderOptions.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
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

/// A distance between key frames that is never reached, as both encoders understand it.
constexpr int unlimited = 1 << 30;

constexpr std::int32_t evenUp(std::int32_t length) {
    return length + length % 2;
}

/// Levels, time information in the stream and the bound of its bits are made for this rate, whatever the pictures' own
/// times are.
AVRational nominalFrameRate(const AVVideoCompressionProperties& compression) {
    constexpr double highest = 60;
    constexpr int largestTerm = 100'000;
    return av_d2q(compression.expectedSourceFrameRate.value_or(highest), largestTerm);
}

/// A second of the highest rate may come at once.
void applyBitRateBound(const AVVideoCompressionProperties& compression, AVCodecContext& context) {
    if (compression.maxBitRate) {
        context.rc_max_rate = *compression.maxBitRate;
        context.rc_buffer_size = static_cast<int>(std::min<std::int64_t>(*compression.maxBitRate, INT_MAX));
    }
}

/// A thread for each two megapixels, and one more, keeps up with 60 pictures a second of anything but whole-screen
/// films. Threads that are not needed would still cost memory, and be taken from what is being recorded.
int threadCount(const AVVideoSettings& settings) {
    constexpr int mostThreads = 4;
    const int wanted = 1 + settings.width * settings.height / 2'000'000;
    const int available = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    return std::min({wanted, available, mostThreads});
}

AVColorPrimaries colorPrimaries(AVVideoColorPrimaries primaries) {
    return primaries == AVVideoColorPrimaries::p3D65 ? AVCOL_PRI_SMPTE432 : AVCOL_PRI_BT709;
}

/// Screens have been converted with the mean of two by two pixels as their chroma. Without properties the colours are
/// those of '420v'.
void applyColors(const std::optional<AVVideoColorProperties>& colors, AVCodecContext& context) {
    context.color_range = AVCOL_RANGE_MPEG;
    context.color_primaries = colors ? colorPrimaries(colors->primaries) : AVCOL_PRI_BT709;
    context.color_trc = AVCOL_TRC_BT709;
    context.colorspace = colors ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    context.chroma_sample_location = colors ? AVCHROMA_LOC_CENTER : AVCHROMA_LOC_LEFT;
}

AVPixelFormat pixelFormat(const AVVideoSettings& settings) {
    const bool isDeep = settings.codec == CMVideoCodecType::hevc && settings.colorProperties;
    return isDeep ? AV_PIX_FMT_YUV420P10 : AV_PIX_FMT_YUV420P;
}

class Options {
  public:
    void set(const char* key, const std::string& value) { av_dict_set(&dictionary_, key, value.c_str(), 0); }
    AVDictionary* release() const { return dictionary_; }

  private:
    AVDictionary* dictionary_ = nullptr;
};

/// Screens want the same sharpness whatever moves, so the quality is a constant quantiser, and no rate control spends
/// time on a picture that hasn't changed. Only a rate factor can be bounded.
void addSharedOptions(const AVVideoCompressionProperties& compression, Options& options) {
    options.set("preset", compression.effort == AVVideoEncodingEffort::realTime ? "ultrafast" : "superfast");
    options.set("tune", "zerolatency");  // a packet comes out for each picture that goes in
    options.set("forced-idr", "1");
    if (compression.constantQuality) {
        options.set(compression.maxBitRate ? "crf" : "qp",
                    fmt::format("{}", std::lround(*compression.constantQuality)));
    }
}

void addX264Options(const AVVideoCompressionProperties& compression, Options& options) {
    addSharedOptions(compression, options);
    options.set("profile", "high");
    if (compression.effort == AVVideoEncodingEffort::realTime) {
        // What the high profile has to offer at no cost. Its arithmetic coding is not used: it saves a tenth of the
        // bytes and triples the time of a picture that is all movement.
        options.set("8x8dct", "1");
        options.set("coder", "vlc");
    }
}

void addX265Options(const AVVideoCompressionProperties& compression, int threads, Options& options) {
    addSharedOptions(compression, options);
    // Without a bound it starts a thread for every processor.
    options.set("x265-params", fmt::format("log-level=none:pools={}:frame-threads=1", threads));
}

}  // namespace

void applyVideoSettings(const AVVideoSettings& settings, AVCodecContext& context) {
    context.width = evenUp(settings.width);
    context.height = evenUp(settings.height);
    context.pix_fmt = pixelFormat(settings);
    context.sample_aspect_ratio = {1, 1};
    context.time_base = {1, videoTimescale};
    context.framerate = nominalFrameRate(settings.compressionProperties);
    applyBitRateBound(settings.compressionProperties, context);
    context.gop_size = unlimited;  // key frames are placed by time, see VideoTrack
    applyColors(settings.colorProperties, context);
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

double nearestAudioRate(double sampleRate) {
    constexpr std::array<double, 13> rates = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                              22050, 16000, 12000, 11025, 8000,  7350};
    if (sampleRate > rates.front()) {
        return 48000;
    }
    return *std::ranges::min_element(rates, {}, [=](double rate) { return std::abs(rate - sampleRate); });
}

AVAudioFormat encodedFormat(const AVAudioSettings& settings) {
    return {AVAudioCommonFormat::float32, nearestAudioRate(settings.sampleRate),
            static_cast<std::uint32_t>(settings.numberOfChannels.value_or(2))};
}

void applyAudioSettings(const AVAudioSettings& settings, AVCodecContext& context) {
    const AVAudioFormat format = encodedFormat(settings);
    av_channel_layout_default(&context.ch_layout, static_cast<int>(format.channelCount));
    context.sample_rate = static_cast<int>(format.sampleRate);
    context.sample_fmt = AV_SAMPLE_FMT_FLTP;
    context.bit_rate = settings.bitRate;
    context.time_base = {1, context.sample_rate};
    context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context.log_level_offset = AV_LOG_TRACE;
}

}  // namespace zorvane
