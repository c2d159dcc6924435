#include "Zorvane/Platform/FFmpeg/FFmpegImageReader.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "tests/Support/TemporaryDirectory.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}

namespace zorvane {
namespace {

/// Two pixels side by side, written by the libraries' own encoder.
std::string makePNG(AVPixelFormat format, const std::vector<std::uint8_t>& row, int width = 2) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PNG);
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->width = width;
    context->height = 1;
    context->time_base = {1, 1};
    context->pix_fmt = format;
    EXPECT_EQ(avcodec_open2(context, codec, nullptr), 0);
    AVFrame* frame = av_frame_alloc();
    frame->format = format;
    frame->width = width;
    frame->height = 1;
    av_frame_get_buffer(frame, 0);
    std::copy(row.begin(), row.end(), frame->data[0]);
    AVPacket* packet = av_packet_alloc();
    avcodec_send_frame(context, frame);
    avcodec_send_frame(context, nullptr);
    EXPECT_EQ(avcodec_receive_packet(context, packet), 0);
    std::string bytes(reinterpret_cast<const char*>(packet->data), static_cast<std::size_t>(packet->size));
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&context);
    return bytes;
}

class FFmpegImageReaderTest : public testing::Test {
  protected:
    std::optional<NSImage> read(const std::string& bytes, const std::string& name = "icon.png") {
        const auto path = directory_.path() / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return readImageFile(path);
    }

    TemporaryDirectory directory_;
};

TEST_F(FFmpegImageReaderTest, EveryKindOfPixelComesOutAsColorAndAlpha) {
    const struct {
        AVPixelFormat format;
        std::vector<std::uint8_t> row;
        std::vector<std::uint8_t> pixels;
    } cases[] = {
        {AV_PIX_FMT_RGBA, {1, 2, 3, 4, 5, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 7, 8}},
        {AV_PIX_FMT_RGB24, {1, 2, 3, 5, 6, 7}, {1, 2, 3, 255, 5, 6, 7, 255}},
        {AV_PIX_FMT_RGBA64BE, {1, 9, 2, 9, 3, 9, 4, 9, 5, 9, 6, 9, 7, 9, 8, 9}, {1, 2, 3, 4, 5, 6, 7, 8}},
        {AV_PIX_FMT_RGB48BE, {1, 9, 2, 9, 3, 9, 5, 9, 6, 9, 7, 9}, {1, 2, 3, 255, 5, 6, 7, 255}},
        {AV_PIX_FMT_GRAY8, {1, 2}, {1, 1, 1, 255, 2, 2, 2, 255}},
        {AV_PIX_FMT_YA8, {1, 4, 2, 8}, {1, 1, 1, 4, 2, 2, 2, 8}},
        {AV_PIX_FMT_GRAY16BE, {1, 9, 2, 9}, {1, 1, 1, 255, 2, 2, 2, 255}},
        {AV_PIX_FMT_YA16BE, {1, 9, 4, 9, 2, 9, 8, 9}, {1, 1, 1, 4, 2, 2, 2, 8}},
        {AV_PIX_FMT_MONOBLACK, {0x40}, {0, 0, 0, 255, 255, 255, 255, 255}},
    };
    for (const auto& each : cases) {
        const auto image = read(makePNG(each.format, each.row));
        ASSERT_TRUE(image) << each.format;
        EXPECT_EQ(*image, (NSImage{.width = 2, .height = 1, .pixels = each.pixels})) << each.format;
    }
}

TEST_F(FFmpegImageReaderTest, AVectorPictureIsDrawnLarge) {
    if (!avcodec_find_decoder(AV_CODEC_ID_SVG)) {
        GTEST_SKIP() << "FFmpeg was built without SVG";
    }
    const auto image = read(
        "<svg xmlns='http://www.w3.org/2000/svg' width='16' height='8'>"
        "<rect width='16' height='8' fill='#ff0000' fill-opacity='0.5'/></svg>",
        "icon.svg");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 256U);
    EXPECT_EQ(image->height, 128U);
    const auto* middle = &image->pixels[4 * (64 * 256 + 128)];
    EXPECT_GE(middle[0], 253);
    EXPECT_EQ(middle[1], 0);
    EXPECT_NEAR(middle[3], 128, 1);
}

TEST_F(FFmpegImageReaderTest, AnUnfitFileIsNoPicture) {
    const std::string good = makePNG(AV_PIX_FMT_RGB24, {1, 2, 3, 5, 6, 7});
    EXPECT_FALSE(read(""));
    EXPECT_FALSE(read("no picture at all"));
    EXPECT_FALSE(read(good.substr(0, 30)));
    EXPECT_FALSE(read(std::string(5 << 20, 'x')));
    EXPECT_FALSE(read(makePNG(AV_PIX_FMT_GRAY8, std::vector<std::uint8_t>(1025), 1025)));
    EXPECT_FALSE(read("<svg", "icon.svg"));
    EXPECT_FALSE(readImageFile(directory_.path() / "missing.png"));
    EXPECT_FALSE(readImageFile(directory_.path()));
}

}  // namespace
}  // namespace zorvane
