// Which of a camera's formats is taken.
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

#include <gtest/gtest.h>
#include <spa/param/format.h>
#include <spa/param/param.h>
#include <spa/param/video/raw.h>
#include <spa/pod/builder.h>
#include <spa/pod/iter.h>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoPods.hpp"

namespace zorvane {
namespace {

using enum AVVideoSourceFormat;

PipeWireVideoOffer one(std::optional<AVVideoSourceFormat> encoding, CMVideoDimensions size, PipeWireFrameRate rate) {
    return {.encoding = encoding, .smallest = size, .largest = size, .slowest = rate, .fastest = rate};
}

constexpr CMVideoDimensions vga{640, 480};
constexpr CMVideoDimensions hd{1280, 720};
constexpr CMVideoDimensions fullHD{1920, 1080};
constexpr CMVideoDimensions uhd{3840, 2160};

TEST(PipeWireVideoFormatTest, TheMostUsefulFormatIsTaken) {
    struct Row {
        const char* what;
        std::vector<PipeWireVideoOffer> offers;
        std::optional<PipeWireVideoFormat> chosen;
    };
    const Row rows[] = {
        {"nothing", {}, std::nullopt},
        {"only what can't be read", {one(std::nullopt, fullHD, {30, 1})}, std::nullopt},
        {"the wanted size before larger and smaller ones",
         {one(yuyv, uhd, {30, 1}), one(yuyv, vga, {30, 1}), one(yuyv, fullHD, {30, 1}), one(yuyv, hd, {30, 1})},
         {{yuyv, fullHD, {30, 1}}}},
        {"the largest that fits before the smallest that doesn't",
         {one(yuyv, uhd, {30, 1}), one(yuyv, vga, {30, 1}), one(yuyv, hd, {30, 1})},
         {{yuyv, hd, {30, 1}}}},
        {"else the smallest", {one(yuyv, {7680, 4320}, {30, 1}), one(yuyv, uhd, {30, 1})}, {{yuyv, uhd, {30, 1}}}},
        {"what moves before what is large, as most webcams on USB 2",
         {one(yuyv, fullHD, {5, 1}), one(yuyv, hd, {10, 1}), one(yuyv, vga, {30, 1}), one(jpeg, fullHD, {30, 1})},
         {{jpeg, fullHD, {30, 1}}}},
        {"a slow one where there is no other", {one(yuyv, fullHD, {5, 1})}, {{yuyv, fullHD, {5, 1}}}},
        {"24000/1001 isn't slow",
         {one(yuyv, vga, {30, 1}), one(yuyv, fullHD, {24000, 1001})},
         {{yuyv, fullHD, {24000, 1001}}}},
        {"the rate nearest to 30",
         {one(yuyv, hd, {60, 1}), one(yuyv, hd, {30000, 1001}), one(yuyv, hd, {25, 1})},
         {{yuyv, hd, {30000, 1001}}}},
        {"raw before JPEG", {one(jpeg, hd, {30, 1}), one(nv12, hd, {30, 1})}, {{nv12, hd, {30, 1}}}},
        {"the camera's own order", {one(uyvy, hd, {30, 1}), one(nv12, hd, {30, 1})}, {{uyvy, hd, {30, 1}}}},
        {"a known rate before an unknown one", {one(yuyv, hd, {0, 1}), one(yuyv, hd, {60, 1})}, {{yuyv, hd, {60, 1}}}},
        {"in ranges, on their steps",
         {{.encoding = nv12,
           .smallest = {16, 16},
           .largest = {4000, 3000},
           .step = {16, 16},
           .slowest = {1, 1},
           .fastest = {120, 1}}},
         {{nv12, {1920, 1072}, {30, 1}}}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(chooseVideoFormat(row.offers), row.chosen) << row.what;
    }
}

TEST(PipeWireVideoFormatTest, AFrameDurationIsExactOrUnknown) {
    EXPECT_EQ((PipeWireFrameRate{30000, 1001}.frameDuration()), CMTime::make(1001, 30000));
    for (const PipeWireFrameRate unknown : {PipeWireFrameRate{0, 1}, PipeWireFrameRate{30, 0}, PipeWireFrameRate{}}) {
        EXPECT_FALSE(unknown.frameDuration().isNumeric());
    }
}

class Pod {
  public:
    Pod() { spa_pod_builder_init(&builder, memory, sizeof memory); }
    alignas(8) std::uint8_t memory[2048]{};
    spa_pod_builder builder{};
};

TEST(PipeWireVideoFormatTest, ListsAndRangesOfANodeAreRead) {
    const spa_rectangle smallest{320, 240};
    const spa_rectangle largest{1920, 1080};
    const spa_rectangle anything{0x7FFFFFFF, 0x7FFFFFFF};
    const spa_fraction thirty{30, 1};
    const spa_fraction fifteen{15, 1};
    const spa_fraction none{0, 1};
    const spa_fraction endless{0x7FFFFFFF, 1};
    Pod lists;
    EXPECT_EQ(parseVideoOffers(static_cast<spa_pod*>(spa_pod_builder_add_object(
                  &lists.builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
                  SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw),
                  SPA_FORMAT_VIDEO_format,
                  SPA_POD_CHOICE_ENUM_Id(3, SPA_VIDEO_FORMAT_YUY2, SPA_VIDEO_FORMAT_YUY2, SPA_VIDEO_FORMAT_v210),
                  SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&largest), SPA_FORMAT_VIDEO_framerate,
                  SPA_POD_CHOICE_ENUM_Fraction(3, &thirty, &thirty, &fifteen)))),
              (std::vector{one(yuyv, fullHD, {30, 1}), one(yuyv, fullHD, {15, 1}), one(std::nullopt, fullHD, {30, 1}),
                           one(std::nullopt, fullHD, {15, 1})}));
    Pod range;
    EXPECT_EQ(
        parseVideoOffers(static_cast<spa_pod*>(spa_pod_builder_add_object(
            &range.builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
            SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_mjpg),
            SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&smallest, &smallest, &largest),
            SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&thirty, &fifteen, &thirty)))),
        (std::vector{PipeWireVideoOffer{
            .encoding = jpeg, .smallest = {320, 240}, .largest = fullHD, .slowest = {15, 1}, .fastest = {30, 1}}}));
    Pod anyhow;
    EXPECT_EQ(parseVideoOffers(static_cast<spa_pod*>(spa_pod_builder_add_object(
                  &anyhow.builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
                  SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_h264),
                  SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&smallest, &smallest, &anything),
                  SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&fifteen, &none, &endless)))),
              (std::vector{one(std::nullopt, {320, 240}, {15, 1})}))
        << "what may be anything is what is preferred";
    EXPECT_TRUE(parseVideoOffers(nullptr).empty());
}

TEST(PipeWireVideoFormatTest, AListThatIsShorterThanItsOwnHeadIsNone) {
    const spa_rectangle size{320, 240};
    Pod pod;
    auto* format = static_cast<spa_pod*>(spa_pod_builder_add_object(
        &pod.builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
        SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_mjpg),
        SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_ENUM_Rectangle(2, &size, &size)));
    const_cast<spa_pod_prop*>(spa_pod_find_prop(format, nullptr, SPA_FORMAT_VIDEO_size))->value.size = 8;
    const auto offers = parseVideoOffers(format);
    ASSERT_EQ(offers.size(), 1u);
    EXPECT_EQ(offers.front().smallest, (CMVideoDimensions{1, 1}));
    EXPECT_EQ(offers.front().largest, (CMVideoDimensions{largestVideoSide, largestVideoSide}));
}

TEST(PipeWireVideoFormatTest, TheWantedFormatIsOfferedFirst) {
    const PipeWireVideoFormat wanted{nv12, hd, {30000, 1001}};
    PipeWireVideoPods pods(wanted);
    ASSERT_EQ(pods.count(), 3u);
    EXPECT_EQ(parseVideoOffers(pods.get()[0]), std::vector{one(nv12, hd, {30000, 1001})});
    EXPECT_EQ(PipeWireVideoPods(std::nullopt).count(), 2u);
}

}  // namespace
}  // namespace zorvane
