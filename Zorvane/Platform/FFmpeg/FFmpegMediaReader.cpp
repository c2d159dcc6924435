#include "Zorvane/Platform/FFmpeg/FFmpegMediaReader.hpp"

#include <algorithm>
#include <memory>
#include <span>
#include <system_error>

#include <fmt/format.h>

#include "Zorvane/Platform/FFmpeg/FFmpegError.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegLog.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

namespace zorvane {
namespace {

struct InputCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using Input = std::unique_ptr<AVFormatContext, InputCloser>;

std::span<AVStream* const> streams(const AVFormatContext& input) {
    return {input.streams, input.nb_streams};
}

Input open(const std::filesystem::path& url) {
    AVFormatContext* context = nullptr;
    const std::string action = fmt::format("read \"{}\"", url.string());
    // With its protocol, so that a name with a colon is not taken for one.
    requireFFmpeg(avformat_open_input(&context, ("file:" + url.string()).c_str(), nullptr, nullptr), action);
    Input input(context);
    requireFFmpeg(avformat_find_stream_info(context, nullptr), action);
    return input;
}

/// How far the packets of one stream reach that are presented: sound's padding lies before 0, and isn't.
struct Extent {
    std::uint64_t packetCount = 0;
    std::int64_t begin = AV_NOPTS_VALUE;
    std::int64_t end = AV_NOPTS_VALUE;

    void add(const AVPacket& packet) {
        packetCount++;
        if (packet.pts != AV_NOPTS_VALUE) {
            const std::int64_t first = std::max<std::int64_t>(packet.pts, 0);
            begin = begin == AV_NOPTS_VALUE ? first : std::min(begin, first);
            end = end == AV_NOPTS_VALUE ? packet.pts + packet.duration : std::max(end, packet.pts + packet.duration);
        }
    }
};

/// A file that was cut off has no index over all of it.
bool hasIndex(const AVFormatContext& input) {
    return std::ranges::all_of(streams(input), [](const AVStream* stream) { return stream->nb_frames > 0; });
}

std::vector<Extent> extentsFromIndex(const AVFormatContext& input) {
    std::vector<Extent> extents;
    for (const AVStream* stream : streams(input)) {
        Extent extent{static_cast<std::uint64_t>(stream->nb_frames), stream->start_time, AV_NOPTS_VALUE};
        if (stream->start_time != AV_NOPTS_VALUE && stream->duration != AV_NOPTS_VALUE) {
            extent.end = stream->start_time + stream->duration;
        }
        extents.push_back(extent);
    }
    return extents;
}

std::vector<Extent> extentsFromPackets(AVFormatContext& input) {
    std::vector<Extent> extents(input.nb_streams);
    const auto packet = makePacket();
    while (av_read_frame(&input, packet.get()) >= 0) {
        extents.at(static_cast<std::size_t>(packet->stream_index)).add(*packet);
        av_packet_unref(packet.get());
    }
    return extents;
}

std::string text(const char* name) {
    return name ? name : "";
}

template <class Value>
std::string tagName(Value value, Value unspecified, const char* (*nameOf)(Value)) {
    return value == unspecified ? "" : text(nameOf(value));
}

ZVMediaInfo::ColorTags colorTags(const AVCodecParameters& parameters) {
    return {
        .primaries = tagName(parameters.color_primaries, AVCOL_PRI_UNSPECIFIED, &av_color_primaries_name),
        .transferFunction = tagName(parameters.color_trc, AVCOL_TRC_UNSPECIFIED, &av_color_transfer_name),
        .matrix = tagName(parameters.color_space, AVCOL_SPC_UNSPECIFIED, &av_color_space_name),
        .range = tagName(parameters.color_range, AVCOL_RANGE_UNSPECIFIED, &av_color_range_name),
    };
}

std::variant<ZVMediaInfo::Video, ZVMediaInfo::Audio, ZVMediaInfo::Other> format(const AVCodecParameters& parameters,
                                                                                std::uint64_t packetCount) {
    switch (parameters.codec_type) {
        case AVMEDIA_TYPE_VIDEO:
            return ZVMediaInfo::Video{parameters.width, parameters.height, packetCount, colorTags(parameters)};
        case AVMEDIA_TYPE_AUDIO:
            return ZVMediaInfo::Audio{parameters.sample_rate, parameters.ch_layout.nb_channels};
        default:
            return ZVMediaInfo::Other{};
    }
}

ZVMediaInfo::Track track(const AVStream& stream, const Extent& extent) {
    const double unit = av_q2d(stream.time_base);
    const AVCodecDescriptor* codec = avcodec_descriptor_get(stream.codecpar->codec_id);
    ZVMediaInfo::Track track{.codec = codec ? codec->name : "unknown",
                             .format = format(*stream.codecpar, extent.packetCount)};
    if (extent.begin != AV_NOPTS_VALUE) {
        track.begin = static_cast<double>(extent.begin) * unit;
    }
    if (extent.end != AV_NOPTS_VALUE) {
        track.duration = static_cast<double>(extent.end - extent.begin) * unit;
    }
    return track;
}

/// From 0 to the end of the track that ends last.
std::optional<double> duration(const std::vector<ZVMediaInfo::Track>& tracks) {
    std::optional<double> longest;
    for (const ZVMediaInfo::Track& track : tracks) {
        if (track.duration) {
            longest = std::max(longest.value_or(0), track.begin.value_or(0) + *track.duration);
        }
    }
    return longest;
}

/// The FFmpeg libraries tell of an empty or foreign file in words that nobody understands.
void requireContent(const std::filesystem::path& url) {
    std::error_code error;
    const auto size = std::filesystem::file_size(url, error);
    if (error) {
        throw NSError::posix(error.value(), "read", url.string());
    }
    if (size == 0) {
        throw NSError(FFmpegErrorDomain, AVERROR_INVALIDDATA,
                      {fmt::format("Unable to read \"{}\": The file is empty.", url.string()), nullptr, {}});
    }
}

}  // namespace

FFmpegMediaReader::FFmpegMediaReader() {
    silenceFFmpegLog();
}

ZVMediaInfo FFmpegMediaReader::read(const std::filesystem::path& url) {
    requireContent(url);
    const Input input = open(url);
    const std::vector<Extent> extents = hasIndex(*input) ? extentsFromIndex(*input) : extentsFromPackets(*input);
    ZVMediaInfo info{.container = text(input->iformat->long_name)};
    for (const AVStream* stream : streams(*input)) {
        info.tracks.push_back(track(*stream, extents.at(static_cast<std::size_t>(stream->index))));
    }
    info.duration = duration(info.tracks);
    return info;
}

}  // namespace zorvane
