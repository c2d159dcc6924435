#include "tests/Support/MovieReader.hpp"

#include <algorithm>
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
    explicit Reader(std::span<const std::byte> bytes) : source_{bytes} {
        constexpr int bufferSize = 4096;
        io_.reset(avio_alloc_context(static_cast<std::uint8_t*>(av_malloc(bufferSize)), bufferSize, 0, &source_,
                                     &Source::read, nullptr, &Source::seek));
        AVFormatContext* context = avformat_alloc_context();
        context->pb = io_.get();
        require(avformat_open_input(&context, "movie", nullptr, nullptr), "open");
        format_.reset(context);
        require(avformat_find_stream_info(context, nullptr), "find streams");
        if (context->nb_streams != 1) {
            throw std::runtime_error("not one track");
        }
        const AVCodecParameters& parameters = *context->streams[0]->codecpar;
        const AVCodec* codec = avcodec_find_decoder(parameters.codec_id);
        decoder_.reset(avcodec_alloc_context3(codec));
        require(avcodec_parameters_to_context(decoder_.get(), &parameters), "decoder");
        decoder_->pkt_timebase = context->streams[0]->time_base;
        require(avcodec_open2(decoder_.get(), codec, nullptr), "decoder");
    }

    Movie read(MovieDetail detail) {
        Movie movie = describe();
        const Owner<AVPacket> packet(av_packet_alloc());
        int result = 0;
        while ((result = av_read_frame(format_.get(), packet.get())) >= 0) {
            movie.packets.push_back(
                {packet->pts, packet->dts, packet->duration, (packet->flags & AV_PKT_FLAG_KEY) != 0});
            if (detail == MovieDetail::pictures) {
                require(avcodec_send_packet(decoder_.get(), packet.get()), "decode");
                receive(movie);
            }
            av_packet_unref(packet.get());
        }
        if (result != AVERROR_EOF) {
            require(result, "read");
        }
        if (detail == MovieDetail::pictures) {
            require(avcodec_send_packet(decoder_.get(), nullptr), "decode");
            receive(movie);
        }
        return movie;
    }

  private:
    Movie describe() const {
        const AVStream& stream = *format_->streams[0];
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

    void receive(Movie& movie) {
        const Owner<AVFrame> frame(av_frame_alloc());
        int result = 0;
        while ((result = avcodec_receive_frame(decoder_.get(), frame.get())) >= 0) {
            MoviePicture picture{frame->pts, frame->width, frame->height, {}, {}, {}};
            const int halfWidth = (frame->width + 1) / 2;
            const int halfHeight = (frame->height + 1) / 2;
            picture.luma = plane(*frame, 0, frame->width, frame->height);
            picture.cb = plane(*frame, 1, halfWidth, halfHeight);
            picture.cr = plane(*frame, 2, halfWidth, halfHeight);
            movie.pictures.push_back(std::move(picture));
        }
        if (result != AVERROR(EAGAIN) && result != AVERROR_EOF) {
            require(result, "decode");
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
    Owner<AVCodecContext> decoder_;
};

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

Movie readMovie(std::span<const std::byte> bytes, MovieDetail detail) {
    return Reader(bytes).read(detail);
}

Movie readMovie(const std::filesystem::path& path, MovieDetail detail) {
    std::ifstream stream(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    return readMovie(std::as_bytes(std::span(bytes)), detail);
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
