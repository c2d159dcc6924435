#include "tests/Support/MovieReader.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

namespace zorvane::testing {
namespace {

void require(int result, const char* what) {
    if (result < 0) {
        char reason[AV_ERROR_MAX_STRING_SIZE] = {};
        av_strerror(result, reason, sizeof(reason));
        throw std::runtime_error(std::string(what) + ": " + reason);
    }
}

std::string text(const char* name) {
    return name ? name : "";
}

struct Source {
    std::span<const std::byte> bytes;
    std::size_t position = 0;

    static int read(void* opaque, std::uint8_t* buffer, int size) {
        auto& source = *static_cast<Source*>(opaque);
        const std::size_t count = std::min(static_cast<std::size_t>(size),
                                           source.bytes.size() - std::min(source.position, source.bytes.size()));
        if (count == 0) {
            return AVERROR_EOF;
        }
        std::memcpy(buffer, source.bytes.data() + source.position, count);
        source.position += count;
        return static_cast<int>(count);
    }

    static std::int64_t seek(void* opaque, std::int64_t offset, int whence) {
        auto& source = *static_cast<Source*>(opaque);
        if (whence == AVSEEK_SIZE) {
            return static_cast<std::int64_t>(source.bytes.size());
        }
        source.position = static_cast<std::size_t>(offset);
        return offset;
    }
};

struct Closer {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVIOContext* context) const {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};

template <class T>
using Owner = std::unique_ptr<T, Closer>;

class Reader {
  public:
    Reader(std::span<const std::byte> bytes, AVMediaType mediaType) : source_{bytes} {
        constexpr int bufferSize = 4096;
        io_.reset(avio_alloc_context(static_cast<std::uint8_t*>(av_malloc(bufferSize)), bufferSize, 0, &source_,
                                     &Source::read, nullptr, &Source::seek));
        AVFormatContext* context = avformat_alloc_context();
        context->pb = io_.get();
        require(avformat_open_input(&context, "movie", nullptr, nullptr), "open");
        format_.reset(context);
        require(avformat_find_stream_info(context, nullptr), "find streams");
        const auto streams = std::span(context->streams, context->nb_streams);
        const auto found =
            std::ranges::find(streams, mediaType, [](const AVStream* stream) { return stream->codecpar->codec_type; });
        if (found == streams.end()) {
            throw std::runtime_error("no such track");
        }
        stream_ = *found;
        const AVCodecParameters& parameters = *stream_->codecpar;
        const AVCodec* codec = avcodec_find_decoder(parameters.codec_id);
        decoder_.reset(avcodec_alloc_context3(codec));
        require(avcodec_parameters_to_context(decoder_.get(), &parameters), "decoder");
        decoder_->pkt_timebase = stream_->time_base;
        require(avcodec_open2(decoder_.get(), codec, nullptr), "decoder");
    }

    Movie read(MovieDetail detail) {
        Movie movie = describe();
        if (detail == MovieDetail::packets) {
            readPackets(movie.packets, [](const AVPacket*) {});
            return movie;
        }
        readPackets(movie.packets, [&](const AVPacket* packet) {
            decode(packet, [&](const AVFrame& frame) { movie.pictures.push_back(pictureOf(frame)); });
        });
        return movie;
    }

    MovieSound readSound() {
        MovieSound sound;
        sound.codec = avcodec_get_name(stream_->codecpar->codec_id);
        sound.sampleRate = stream_->codecpar->sample_rate;
        sound.channels = stream_->codecpar->ch_layout.nb_channels;
        sound.timescale = stream_->time_base.den;
        sound.startTime = stream_->start_time;
        sound.duration = stream_->duration;
        readPackets(sound.packets, [&](const AVPacket* packet) {
            decode(packet, [&](const AVFrame& frame) { addFrame(frame, sound); });
        });
        const std::int64_t end = sound.packets.back().pts + sound.packets.back().duration;
        sound.samples.resize(std::min(sound.samples.size(), static_cast<std::size_t>(end * sound.channels)));
        return sound;
    }

  private:
    Movie describe() const {
        const AVStream& stream = *stream_;
        const AVCodecParameters& parameters = *stream.codecpar;
        Movie movie;
        const AVDictionaryEntry* const brand = av_dict_get(format_->metadata, "major_brand", nullptr, 0);
        movie.brand = brand ? brand->value : "";
        movie.codec = avcodec_get_name(parameters.codec_id);
        movie.profile = text(avcodec_profile_name(parameters.codec_id, parameters.profile));
        movie.pixelFormat = text(av_get_pix_fmt_name(static_cast<AVPixelFormat>(parameters.format)));
        movie.range = text(av_color_range_name(parameters.color_range));
        movie.primaries = text(av_color_primaries_name(parameters.color_primaries));
        movie.transfer = text(av_color_transfer_name(parameters.color_trc));
        movie.matrix = text(av_color_space_name(parameters.color_space));
        char tag[AV_FOURCC_MAX_STRING_SIZE] = {};
        movie.tag = av_fourcc_make_string(tag, parameters.codec_tag);
        movie.width = parameters.width;
        movie.height = parameters.height;
        movie.timescale = stream.time_base.den;
        movie.startTime = stream.start_time;
        movie.duration = stream.duration;
        return movie;
    }

    template <class Function>
    void readPackets(std::vector<MoviePacket>& packets, Function function) {
        const Owner<AVPacket> packet(av_packet_alloc());
        int result = 0;
        while ((result = av_read_frame(format_.get(), packet.get())) >= 0) {
            const bool isWhole = (packet->flags & AV_PKT_FLAG_CORRUPT) == 0;
            if (packet->stream_index == stream_->index && isWhole) {
                const bool isKey = (packet->flags & AV_PKT_FLAG_KEY) != 0;
                packets.push_back({packet->pts, packet->dts, packet->duration, isKey});
                function(packet.get());
            }
            av_packet_unref(packet.get());
        }
        if (result != AVERROR_EOF) {
            require(result, "read");
        }
        function(nullptr);
    }

    template <class Function>
    void decode(const AVPacket* packet, Function function) {
        require(avcodec_send_packet(decoder_.get(), packet), "decode");
        const Owner<AVFrame> frame(av_frame_alloc());
        int result = 0;
        while ((result = avcodec_receive_frame(decoder_.get(), frame.get())) >= 0) {
            function(*frame);
        }
        if (result != AVERROR(EAGAIN) && result != AVERROR_EOF) {
            require(result, "decode");
        }
    }

    static MoviePicture pictureOf(const AVFrame& frame) {
        const int halfWidth = (frame.width + 1) / 2;
        const int halfHeight = (frame.height + 1) / 2;
        return {frame.pts,
                frame.width,
                frame.height,
                plane(frame, 0, frame.width, frame.height),
                plane(frame, 1, halfWidth, halfHeight),
                plane(frame, 2, halfWidth, halfHeight)};
    }

    // In its place, so that a hole is heard as one. In a fragmented movie the padding has times before 0.
    static void addFrame(const AVFrame& frame, MovieSound& sound) {
        const auto begin = static_cast<std::size_t>(std::max<std::int64_t>(frame.pts, 0) * sound.channels);
        sound.samples.resize(std::max(sound.samples.size(), begin));
        for (auto index = std::max<std::int64_t>(-frame.pts, 0); index < frame.nb_samples; ++index) {
            for (int channel = 0; channel < sound.channels; ++channel) {
                sound.samples.push_back(reinterpret_cast<const float*>(frame.extended_data[channel])[index]);
            }
        }
    }

    static std::vector<std::uint8_t> plane(const AVFrame& frame, int index, int width, int height) {
        const bool isDeep = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format))->comp[0].depth > 8;
        std::vector<std::uint8_t> samples;
        for (int y = 0; y < height; ++y) {
            const std::uint8_t* const row = frame.data[index] + std::ptrdiff_t{frame.linesize[index]} * y;
            for (int x = 0; x < width; ++x) {
                samples.push_back(isDeep ? static_cast<std::uint8_t>((row[2 * x] | row[2 * x + 1] << 8) >> 2) : row[x]);
            }
        }
        return samples;
    }

    Source source_;
    Owner<AVIOContext> io_;
    Owner<AVFormatContext> format_;
    AVStream* stream_ = nullptr;
    Owner<AVCodecContext> decoder_;
};

std::vector<char> contentOf(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

template <class Member>
std::vector<std::int64_t> collect(const std::vector<MoviePacket>& packets, Member member) {
    std::vector<std::int64_t> values;
    for (const MoviePacket& packet : packets) {
        values.push_back(packet.*member);
    }
    return values;
}

}  // namespace

std::vector<std::int64_t> Movie::times() const {
    return collect(packets, &MoviePacket::pts);
}

std::vector<std::int64_t> Movie::durations() const {
    return collect(packets, &MoviePacket::duration);
}

std::int64_t MovieSound::peak(std::int64_t begin, std::int64_t end, int channel) const {
    std::int64_t loudestFrame = begin;
    for (std::int64_t frame = begin; frame < end; ++frame) {
        if (std::abs(at(frame, channel)) > std::abs(at(loudestFrame, channel))) {
            loudestFrame = frame;
        }
    }
    return loudestFrame;
}

float MovieSound::loudest(std::int64_t begin, std::int64_t end) const {
    float loudest = 0;
    for (std::int64_t frame = begin; frame < end; ++frame) {
        for (int channel = 0; channel < channels; ++channel) {
            loudest = std::max(loudest, std::abs(at(frame, channel)));
        }
    }
    return loudest;
}

Movie readMovie(std::span<const std::byte> bytes, MovieDetail detail) {
    return Reader(bytes, AVMEDIA_TYPE_VIDEO).read(detail);
}

Movie readMovie(const std::filesystem::path& path, MovieDetail detail) {
    const std::vector<char> bytes = contentOf(path);
    return readMovie(std::as_bytes(std::span(bytes)), detail);
}

MovieSound readSound(std::span<const std::byte> bytes) {
    return Reader(bytes, AVMEDIA_TYPE_AUDIO).readSound();
}

MovieSound readSound(const std::filesystem::path& path) {
    const std::vector<char> bytes = contentOf(path);
    return readSound(std::as_bytes(std::span(bytes)));
}

std::string movieBoxes(std::span<const std::byte> bytes) {
    std::string types;
    while (bytes.size() >= 8) {
        std::uint64_t size = 0;
        for (std::size_t index = 0; index < 4; ++index) {
            size = size << 8 | std::to_integer<std::uint64_t>(bytes[index]);
        }
        types += types.empty() ? "" : " ";
        types += std::string(reinterpret_cast<const char*>(bytes.data()) + 4, 4);
        if (size == 1 && bytes.size() >= 16) {
            size = 0;
            for (std::size_t index = 8; index < 16; ++index) {
                size = size << 8 | std::to_integer<std::uint64_t>(bytes[index]);
            }
        }
        if (size < 8 || size > bytes.size()) {
            return types + "!";
        }
        bytes = bytes.subspan(size);
    }
    return types;
}

}  // namespace zorvane::testing
