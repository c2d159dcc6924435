#include "Zorvane/Platform/FFmpeg/FFmpegMediaReader.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "WriterBench.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane::testing {
namespace {

class FFmpegMediaReaderTest : public ::testing::Test {
  protected:
    ZVMediaInfo read(const std::vector<std::byte>& bytes) const {
        const std::filesystem::path path = directory.path() / "movie.mov";
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return FFmpegMediaReader().read(path);
    }

    const TemporaryDirectory directory;
};

TEST_F(FFmpegMediaReaderTest, SoundBeginsAndEndsWhereItIsHeard) {
    WriterBench bench;
    bench.addSound(stereoSound(44100));
    ASSERT_TRUE(bench.start());
    for (int index = 0; index < 15; ++index) {
        bench.append(index * 0.1, bench.black);
        bench.appendSound(soundAt(CMTime::make(index, 10), stereo48, 4800, steady(0.1)));
    }
    const ZVMediaInfo growing = read(bench.file->bytes());  // as if it had been cut off here
    bench.writer->endSession(CMTime::make(3, 2));
    ASSERT_EQ(bench.finish(), AVAssetWriter::Status::completed);
    const ZVMediaInfo finished = read(bench.file->bytes());

    ASSERT_EQ(finished.tracks.size(), 2U);
    EXPECT_EQ(finished.duration, 1.5);
    EXPECT_EQ(finished.tracks[0].duration, 1.5);
    EXPECT_EQ(finished.tracks[1].begin, 0);
    EXPECT_EQ(finished.tracks[1].duration, 1.5);
    EXPECT_EQ(finished.tracks[1].codec, "aac");
    EXPECT_EQ(std::get<ZVMediaInfo::Audio>(finished.tracks[1].format), (ZVMediaInfo::Audio{44100, 2}));

    ASSERT_EQ(growing.tracks.size(), 2U);
    EXPECT_EQ(growing.tracks[1].begin, 0);
    const double packet = 1024.0 / 44100;
    const double packets = growing.tracks[1].duration.value_or(0) / packet;
    EXPECT_GT(packets, 1 / packet);
    EXPECT_NEAR(packets, std::round(packets), 1e-6);
}

}  // namespace
}  // namespace zorvane::testing
