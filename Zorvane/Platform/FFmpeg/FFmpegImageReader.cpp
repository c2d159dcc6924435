#include "Zorvane/Platform/FFmpeg/FFmpegImageReader.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <vector>

#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegLog.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/dict.h>
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

namespace zorvane {
namespace {

constexpr std::size_t largestFile = 4 << 20;
constexpr int longestSide = 1024;
constexpr const char* sideOfVectorPicture = "256";

std::vector<std::uint8_t> bytesOf(const std::filesystem::path& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error || size == 0 || size > largestFile) {
        return {};
    }
    std::vector<std::uint8_t> bytes(size);
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

/// Null if the libraries have none.
FFmpegHandle<AVCodecContext> openDecoder(bool isVector) {
    const AVCodec* codec = avcodec_find_decoder(isVector ? AV_CODEC_ID_SVG : AV_CODEC_ID_PNG);
    FFmpegHandle<AVCodecContext> context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context) {
        return nullptr;
    }
    context->max_pixels = longestSide * longestSide;
    context->thread_count = 1;
    AVDictionary* options = nullptr;
    if (isVector) {
        av_dict_set(&options, "width", sideOfVectorPicture, 0);
        av_dict_set(&options, "height", sideOfVectorPicture, 0);
    }
    const bool isOpen = avcodec_open2(context.get(), codec, &options) == 0;
    av_dict_free(&options);
    return isOpen ? std::move(context) : nullptr;
}

/// Null if there is no picture.
FFmpegHandle<AVFrame> decode(const std::vector<std::uint8_t>& bytes, bool isVector) {
    const auto decoder = openDecoder(isVector);
    const auto packet = makePacket();
    auto frame = makeFrame();
    if (!decoder || av_new_packet(packet.get(), static_cast<int>(bytes.size())) != 0) {
        return nullptr;
    }
    std::memcpy(packet->data, bytes.data(), bytes.size());
    packet->flags |= AV_PKT_FLAG_KEY;
    const bool isDecoded = avcodec_send_packet(decoder.get(), packet.get()) == 0 &&
                           avcodec_send_packet(decoder.get(), nullptr) == 0 &&
                           avcodec_receive_frame(decoder.get(), frame.get()) == 0;
    return isDecoded ? std::move(frame) : nullptr;
}

using Pixel = std::array<std::uint8_t, 4>;  // red, green, blue, alpha

/// The colour at a place of one row. Of 16 bits the upper eight count, which are the first byte.
using PixelReader = Pixel (*)(const AVFrame& frame, const std::uint8_t* row, int x);

Pixel paletteColor(const AVFrame& frame, const std::uint8_t* row, int x) {
    std::uint32_t argb = 0;
    std::memcpy(&argb, frame.data[1] + 4 * row[x], sizeof argb);
    return {static_cast<std::uint8_t>(argb >> 16), static_cast<std::uint8_t>(argb >> 8),
            static_cast<std::uint8_t>(argb), static_cast<std::uint8_t>(argb >> 24)};
}

/// Null for a form that no decoder here makes.
PixelReader readerFor(int format) {
    using Frame = const AVFrame&;
    using Row = const std::uint8_t*;
    switch (format) {
        case AV_PIX_FMT_RGBA:
            return [](Frame, Row row, int x) {
                return Pixel{row[4 * x], row[4 * x + 1], row[4 * x + 2], row[4 * x + 3]};
            };
        case AV_PIX_FMT_BGRA:
            return [](Frame, Row row, int x) {
                return Pixel{row[4 * x + 2], row[4 * x + 1], row[4 * x], row[4 * x + 3]};
            };
        case AV_PIX_FMT_RGB24:
            return [](Frame, Row row, int x) { return Pixel{row[3 * x], row[3 * x + 1], row[3 * x + 2], 255}; };
        case AV_PIX_FMT_RGBA64BE:
            return [](Frame, Row row, int x) {
                return Pixel{row[8 * x], row[8 * x + 2], row[8 * x + 4], row[8 * x + 6]};
            };
        case AV_PIX_FMT_RGB48BE:
            return [](Frame, Row row, int x) { return Pixel{row[6 * x], row[6 * x + 2], row[6 * x + 4], 255}; };
        case AV_PIX_FMT_PAL8:
            return paletteColor;
        case AV_PIX_FMT_GRAY8:
            return [](Frame, Row row, int x) { return Pixel{row[x], row[x], row[x], 255}; };
        case AV_PIX_FMT_YA8:
            return [](Frame, Row row, int x) { return Pixel{row[2 * x], row[2 * x], row[2 * x], row[2 * x + 1]}; };
        case AV_PIX_FMT_GRAY16BE:
            return [](Frame, Row row, int x) { return Pixel{row[2 * x], row[2 * x], row[2 * x], 255}; };
        case AV_PIX_FMT_YA16BE:
            return [](Frame, Row row, int x) { return Pixel{row[4 * x], row[4 * x], row[4 * x], row[4 * x + 2]}; };
        case AV_PIX_FMT_MONOBLACK:
            return [](Frame, Row row, int x) {
                const auto level = static_cast<std::uint8_t>((row[x / 8] >> (7 - x % 8) & 1) * 255);
                return Pixel{level, level, level, 255};
            };
        default:
            return nullptr;
    }
}

std::optional<NSImage> imageFrom(const AVFrame& frame) {
    const PixelReader read = readerFor(frame.format);
    if (!read || frame.width < 1 || frame.height < 1 || frame.width > longestSide || frame.height > longestSide) {
        return std::nullopt;
    }
    NSImage image{.width = static_cast<std::uint32_t>(frame.width), .height = static_cast<std::uint32_t>(frame.height)};
    image.pixels.reserve(std::size_t{4} * image.width * image.height);
    for (int y = 0; y < frame.height; ++y) {
        const std::uint8_t* row = frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0];
        for (int x = 0; x < frame.width; ++x) {
            const Pixel pixel = read(frame, row, x);
            image.pixels.insert(image.pixels.end(), pixel.begin(), pixel.end());
        }
    }
    return image;
}

/// Drawn pictures come with their colours multiplied by alpha.
void divideByAlpha(NSImage& image) {
    for (std::size_t pixel = 0; pixel < image.pixels.size(); pixel += 4) {
        const unsigned int alpha = image.pixels[pixel + 3];
        for (std::size_t color = pixel; alpha != 0 && color < pixel + 3; ++color) {
            const unsigned int value = (image.pixels[color] * 255U + alpha / 2) / alpha;
            image.pixels[color] = static_cast<std::uint8_t>(std::min(value, 255U));
        }
    }
}

}  // namespace

std::optional<NSImage> readImageFile(const std::filesystem::path& file) {
    silenceFFmpegLog();
    const auto bytes = bytesOf(file);
    if (bytes.empty()) {
        return std::nullopt;
    }
    const bool isVector = file.extension() == ".svg";
    const auto frame = decode(bytes, isVector);
    auto image = frame ? imageFrom(*frame) : std::nullopt;
    if (image && isVector) {
        divideByAlpha(*image);
    }
    return image;
}

}  // namespace zorvane
