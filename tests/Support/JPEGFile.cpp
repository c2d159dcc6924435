#include "tests/Support/JPEGFile.hpp"

#include <algorithm>
#include <memory>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/dict.h>
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

namespace zorvane::testing {
namespace {

void require(bool holds) {
    if (!holds) {
        throw std::runtime_error("Unable to make a JPEG file.");
    }
}

struct Deleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

AVPixelFormat pixelFormat(JPEGChroma chroma) {
    switch (chroma) {
        case JPEGChroma::half:
            return AV_PIX_FMT_YUVJ420P;
        case JPEGChroma::halfWidth:
            return AV_PIX_FMT_YUVJ422P;
        case JPEGChroma::full:
            return AV_PIX_FMT_YUVJ444P;
    }
    return AV_PIX_FMT_NONE;
}

std::unique_ptr<AVCodecContext, Deleter> makeEncoder(int width, int height, JPEGChroma chroma) {
    const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    std::unique_ptr<AVCodecContext, Deleter> encoder(avcodec_alloc_context3(codec));
    encoder->width = width;
    encoder->height = height;
    encoder->pix_fmt = pixelFormat(chroma);
    encoder->color_range = AVCOL_RANGE_JPEG;
    encoder->time_base = {1, 1};
    encoder->flags |= AV_CODEC_FLAG_QSCALE;
    encoder->qmin = 1;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "huffman", "default", 0);
    const int result = avcodec_open2(encoder.get(), codec, &options);
    av_dict_free(&options);
    require(result >= 0);
    return encoder;
}

void fill(AVFrame& frame, const std::function<std::array<std::uint8_t, 3>(int x, int y)>& samplesAt) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            const auto samples = samplesAt(x, y);
            frame.data[0][y * frame.linesize[0] + x] = samples[0];
            for (const int plane : {1, 2}) {
                const int place = (y >> format.log2_chroma_h) * frame.linesize[plane] + (x >> format.log2_chroma_w);
                frame.data[plane][place] = samples[static_cast<std::size_t>(plane)];
            }
        }
    }
}

std::vector<std::byte> bytes(std::initializer_list<int> values) {
    std::vector<std::byte> result;
    std::ranges::transform(values, std::back_inserter(result), [](int value) { return static_cast<std::byte>(value); });
    return result;
}

}  // namespace

std::vector<std::byte> makeJPEG(int width, int height, JPEGChroma chroma,
                                const std::function<std::array<std::uint8_t, 3>(int x, int y)>& samplesAt) {
    const auto encoder = makeEncoder(width, height, chroma);
    const std::unique_ptr<AVFrame, Deleter> frame(av_frame_alloc());
    frame->format = encoder->pix_fmt;
    frame->width = width;
    frame->height = height;
    frame->quality = FF_QP2LAMBDA;
    frame->pts = 0;
    require(av_frame_get_buffer(frame.get(), 0) >= 0);
    fill(*frame, samplesAt);
    const std::unique_ptr<AVPacket, Deleter> packet(av_packet_alloc());
    require(avcodec_send_frame(encoder.get(), frame.get()) >= 0);
    require(avcodec_receive_packet(encoder.get(), packet.get()) >= 0);
    const auto* const data = reinterpret_cast<const std::byte*>(packet->data);
    return {data, data + packet->size};
}

std::vector<std::byte> withoutHuffmanTables(const std::vector<std::byte>& file) {
    constexpr int tables = 0xC4;
    constexpr int startOfScan = 0xDA;
    std::vector<std::byte> result(file.begin(), file.begin() + 2);
    std::size_t place = 2;
    for (int marker = 0; marker != startOfScan;) {
        marker = std::to_integer<int>(file.at(place + 1));
        const auto length = std::to_integer<std::size_t>(file.at(place + 2)) * 256 +
                            std::to_integer<std::size_t>(file.at(place + 3)) + 2;
        if (marker != tables) {
            result.insert(result.end(), file.begin() + static_cast<std::ptrdiff_t>(place),
                          file.begin() + static_cast<std::ptrdiff_t>(place + length));
        }
        place += length;
    }
    result.insert(result.end(), file.begin() + static_cast<std::ptrdiff_t>(place), file.end());
    return result;
}

std::vector<std::byte> makeGreyJPEG() {
    std::vector<std::byte> file = bytes({0xFF, 0xD8, 0xFF, 0xDB, 0, 67, 0});
    file.insert(file.end(), 64, std::byte{8});  // quantisers
    const std::vector<std::byte> frame = bytes({0xFF, 0xC0, 0, 11, 8, 0, 8, 0, 8, 1, 1, 0x11, 0});
    const std::vector<std::byte> scan = bytes({0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0});
    // 100 above the middle, in seven bits behind the code of their number; then the code of the block's end.
    const std::vector<std::byte> data = bytes({0b11110'110, 0b0100'1010, 0xFF, 0xD9});
    for (const auto& part : {frame, scan, data}) {
        file.insert(file.end(), part.begin(), part.end());
    }
    return file;
}

}  // namespace zorvane::testing
