#include "Zorvane/Platform/FFmpeg/Muxer.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>

#include "Zorvane/Platform/FFmpeg/FFmpegError.hpp"
#include "Zorvane/Platform/FFmpeg/VideoTimeline.hpp"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/opt.h>
}

namespace zorvane {
namespace {

constexpr int bufferSize = 64 * 1024;

const char* formatName(AVFileType fileType) {
    switch (fileType) {
        case AVFileType::quickTimeMovie:
            return "mov";
        case AVFileType::mpeg4:
            return "mp4";
        case AVFileType::appleM4A:
            return "ipod";
    }
    return "mov";
}

/// 0 leaves the choice to the muxer.
std::uint32_t codecTag(AVCodecID codec) {
    switch (codec) {
        case AV_CODEC_ID_HEVC:
            return MKTAG('h', 'v', 'c', '1');
        case AV_CODEC_ID_H264:
            return MKTAG('a', 'v', 'c', '1');
        default:
            return 0;
    }
}

/// Of the muxer's option "movflags"; null for none.
const char* flags(Muxer::Form form) {
    switch (form) {
        case Muxer::Form::whole:
            return nullptr;
        case Muxer::Form::fragmented:
            return "frag_custom+delay_moov+default_base_moof+skip_trailer";
        case Muxer::Form::segmented:
            return "frag_custom+dash+delay_moov+default_base_moof+skip_sidx+skip_trailer";
    }
    return nullptr;
}

/// One in which every track's end is a whole number, so that none is rounded. Long movies then need 64 bits for their
/// length, which the muxer sees to.
std::int32_t movieTimescale(std::span<const MediaTrackFormat> formats) {
    std::int64_t common = 1;
    for (const MediaTrackFormat& format : formats) {
        common = std::min<std::int64_t>(std::lcm(common, std::int64_t{format.timescale}),
                                        std::numeric_limits<std::int32_t>::max());
    }
    return static_cast<std::int32_t>(common);
}

}  // namespace

MemorySink::MemorySink() {
    auto* const buffer = static_cast<std::uint8_t*>(av_malloc(bufferSize));
    if (!buffer) {
        throw std::bad_alloc();
    }
    context_.reset(avio_alloc_context(buffer, bufferSize, 1, this, nullptr, &MemorySink::write, &MemorySink::seek));
    if (!context_) {
        av_free(buffer);
        throw std::bad_alloc();
    }
}

void MemorySink::keepFrom(std::int64_t position) {
    kept_.clear();
    keepFrom_ = position;
}

std::int64_t MemorySink::position() const {
    return avio_tell(context_.get());
}

void MemorySink::seek(std::int64_t position) {
    const std::int64_t result = avio_seek(context_.get(), position, SEEK_SET);
    requireFFmpeg(result < 0 ? static_cast<int>(result) : 0, "move inside the movie");
}

void MemorySink::flush() {
    avio_flush(context_.get());
    requireFFmpeg(context_->error, "put the movie together");
}

int MemorySink::write(void* sink, std::uint8_t* bytes, int count) {
    return static_cast<MemorySink*>(sink)->keep(bytes, count);
}

std::int64_t MemorySink::seek(void* sink, std::int64_t offset, int whence) {
    if (whence != SEEK_SET) {
        return AVERROR(ENOSYS);
    }
    return static_cast<MemorySink*>(sink)->position_ = offset;
}

// Called by C code, so nothing may be thrown.
int MemorySink::keep(const std::uint8_t* bytes, int count) {
    const std::int64_t skipped = std::clamp<std::int64_t>(keepFrom_ - position_, 0, count);
    if (skipped < count) {
        const auto offset = static_cast<std::size_t>(position_ + skipped - keepFrom_);
        const auto keptCount = static_cast<std::size_t>(count - skipped);
        try {
            kept_.resize(std::max(kept_.size(), offset + keptCount));
        } catch (const std::bad_alloc&) {
            return AVERROR(ENOMEM);
        }
        std::memcpy(kept_.data() + offset, bytes + skipped, keptCount);
    }
    position_ += count;
    return count;
}

Muxer::Muxer(AVFileType fileType, std::span<const MediaTrackFormat> formats, Form form) {
    AVFormatContext* context = nullptr;
    requireFFmpeg(avformat_alloc_output_context2(&context, nullptr, formatName(fileType), nullptr), "start a movie");
    context_.reset(context);
    context_->pb = sink_.context();
    for (const MediaTrackFormat& format : formats) {
        addTrack(format);
    }
    writeHeader(movieTimescale(formats), form);
}

Muxer::~Muxer() = default;

void Muxer::addTrack(const MediaTrackFormat& format) {
    AVStream* const stream = avformat_new_stream(context_.get(), nullptr);
    if (!stream) {
        throw std::bad_alloc();
    }
    requireFFmpeg(avcodec_parameters_copy(stream->codecpar, format.codec.get()), "start a movie");
    stream->codecpar->codec_tag = codecTag(format.codec->codec_id);
    stream->time_base = {1, format.timescale};
}

void Muxer::writeHeader(std::int32_t movieTimescale, Form form) {
    AVDictionary* options = nullptr;
    if (flags(form)) {
        av_dict_set(&options, "movflags", flags(form), 0);
    }
    // Sound has the ticks of its rate by itself.
    av_dict_set_int(&options, "video_track_timescale", videoTimescale, 0);
    av_dict_set_int(&options, "movie_timescale", movieTimescale, 0);
    const int result = avformat_write_header(context_.get(), &options);
    av_dict_free(&options);
    requireFFmpeg(result, "start a movie");
}

// The muxer looks at the flag only after it has compared a packet's time with the end of the last fragment, and moved
// it there if it was earlier. So the flag is brought by a packet without content, which nothing is written of. It also
// tells a track's start before there is any of it, which the index of the first fragment needs.
void Muxer::jumpTo(std::size_t track, std::int64_t tick) {
    requireFFmpeg(av_opt_set(context_->priv_data, "movflags", "+frag_discont", 0), "go on with a movie");
    const FFmpegHandle<AVPacket> empty = makePacket();
    empty->pts = tick - 1;
    empty->dts = tick - 1;
    write(track, *empty);
}

void Muxer::write(std::size_t track, AVPacket& packet) {
    packet.stream_index = static_cast<int>(track);
    requireFFmpeg(av_write_frame(context_.get(), &packet), "put the movie together");
}

void Muxer::cutFragment() {
    requireFFmpeg(av_write_frame(context_.get(), nullptr), "put the movie together");
    sink_.flush();
}

void Muxer::writeTrailer() {
    requireFFmpeg(av_write_trailer(context_.get()), "put the movie together");
    sink_.flush();
}

}  // namespace zorvane
