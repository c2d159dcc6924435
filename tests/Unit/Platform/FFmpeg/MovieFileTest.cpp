#include "Zorvane/Platform/FFmpeg/MovieFile.hpp"

#include <gtest/gtest.h>

#include <array>

#include "WriterBench.hpp"
#include "Zorvane/Platform/FFmpeg/VideoEncoder.hpp"
#include "Zorvane/Platform/FFmpeg/VideoTimeline.hpp"

extern "C" {
#include <libavcodec/packet.h>
}

namespace zorvane::testing {
namespace {

// A muxer writes the size of a box when it has written the rest, which for a large box is far back.
TEST(MovieFileTest, FragmentsAndIndexOfManyPacketsAreWhole) {
    VideoEncoder encoder(smallVideo(), "libx264");
    const auto record = std::make_shared<FileRecord>();
    const std::array<MediaTrackFormat, 1> formats{MediaTrackFormat{encoder.codecParameters(), videoTimescale}};
    MovieFile movie(std::make_unique<MemoryFile>(record), AVFileType::mpeg4, formats);
    encoder.encode(0, VideoEncoder::PictureKind::key);
    const auto original = makePacket();
    ASSERT_TRUE(encoder.receive(*original));

    constexpr std::int64_t perFragment = 15'000;
    const auto packet = makePacket();
    for (std::int64_t index = 0; index < 2 * perFragment; ++index) {
        ASSERT_EQ(av_packet_ref(packet.get(), original.get()), 0);
        // All but the last of a fragment's packets follow each other as closely as they can.
        packet->pts = index / perFragment * 90'000 + index % perFragment;
        packet->dts = packet->pts;
        movie.track(0).append(*packet);
    }
    movie.flush();
    EXPECT_EQ(readMovie(record->bytes()).packets.size(), 2U * perFragment);
    const std::array<std::optional<std::int64_t>, 1> end{180'000};
    movie.finish(end);

    EXPECT_EQ(movieBoxes(record->bytes()), "ftyp free mdat moov");
    const Movie finished = readMovie(record->bytes());
    EXPECT_EQ(finished.packets.size(), 2U * perFragment);
    EXPECT_EQ(finished.duration, 180'000);
    EXPECT_EQ(finished.packets.back().pts, 90'000 + perFragment - 1);
}

}  // namespace
}  // namespace zorvane::testing
