#include "Zorvane/Platform/FFmpeg/FFmpegAssetWriter.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "WriterBench.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane::testing {
namespace {

using std::chrono::milliseconds;

using Status = AVAssetWriter::Status;
using Ticks = std::vector<std::int64_t>;

/// Of the first error, if it is one of the operating system.
std::int64_t errorNumberOf(const AVAssetWriter& writer) {
    try {
        std::rethrow_exception(writer.error());
    } catch (const NSError& error) {
        return error.domain() == NSPOSIXErrorDomain ? error.code() : -1;
    }
}

// What a process that is killed leaves behind is the file as it was after some whole fragment, with or without a part
// of the next one.
TEST(FFmpegAssetWriterTroubleTest, FileCutOffAtAnyMomentPlaysToItsLastFragment) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    for (int index = 0; index < 40; ++index) {
        bench.append(index * 0.05, index % 2 == 0 ? bench.black : bench.white);
    }
    bench.writer->endSession(CMTime::make(2, 1));
    ASSERT_EQ(bench.finish(), Status::completed);

    const std::vector<std::byte> bytes = bench.file->bytes();
    const std::vector<std::size_t> boundaries = bench.file->boundaries();
    ASSERT_EQ(boundaries.size(), 6U);  // five fragments and the index
    // The header of the media data is what finishing overwrote; before that it was a box to skip.
    std::vector<std::byte> growing = bytes;
    const std::array<std::byte, 8> reserved{std::byte{0},   std::byte{0},   std::byte{0},   std::byte{16},
                                            std::byte{'f'}, std::byte{'r'}, std::byte{'e'}, std::byte{'e'}};
    const std::size_t header = std::to_integer<std::size_t>(bytes[3]);
    std::copy(reserved.begin(), reserved.end(), growing.begin() + static_cast<std::ptrdiff_t>(header));
    for (std::size_t fragment = 0; fragment < boundaries.size(); ++fragment) {
        const std::size_t next = fragment + 1 < boundaries.size() ? boundaries[fragment + 1] : boundaries[fragment];
        for (const std::size_t size :
             {boundaries[fragment], boundaries[fragment] + 7, (boundaries[fragment] + next) / 2}) {
            const auto cut = std::span(growing).first(std::min(size, growing.size()));
            const Movie movie = readMovie(cut, MovieDetail::pictures);
            const std::size_t whole = std::min<std::size_t>((fragment + 1) * 8, 40);
            ASSERT_GE(movie.packets.size(), whole) << "cut at " << size;
            EXPECT_EQ(movie.packets[whole - 1].pts, static_cast<std::int64_t>(whole - 1) * 4'500);
        }
    }
}

TEST(FFmpegAssetWriterTroubleTest, StillScreenReachesTheFileWithinHalfASecond) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    for (int second = 0; second < 4; ++second) {
        bench.append(second, bench.white);
        bench.clock->advance(milliseconds(600));
        const Movie movie = bench.movie(MovieDetail::pictures);
        ASSERT_EQ(movie.packets.size(), static_cast<std::size_t>(second + 1));
        EXPECT_EQ(movie.packets.back().pts, second * 90'000);
        EXPECT_EQ(movie.pictures.size(), movie.packets.size());
        bench.clock->advance(milliseconds(400));
    }
    EXPECT_EQ(bench.clock->pendingTimers(), 0U);  // nothing is due while nothing is new
}

TEST(FFmpegAssetWriterTroubleTest, MovementAfterAStillScreenKeepsItsTimesInAFileThatIsCutOff) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    bench.append(0.0, bench.black);
    bench.clock->advance(milliseconds(600));  // writes the picture as if it lasted a second
    for (int index = 0; index < 12; ++index) {
        bench.append(0.1 + index * 0.05, index % 2 == 0 ? bench.white : bench.black);
    }
    bench.clock->advance(milliseconds(600));
    const Movie movie = bench.movie(MovieDetail::pictures);
    ASSERT_EQ(movie.packets.size(), 13U);
    for (int index = 0; index < 12; ++index) {
        EXPECT_EQ(movie.packets[static_cast<std::size_t>(index) + 1].pts, 9'000 + index * 4'500);
    }
}

TEST(FFmpegAssetWriterTroubleTest, PictureBeforeTheStartThatWasWrittenAlreadyMakesRoomForANewerOne) {
    WriterBench bench;
    ASSERT_TRUE(bench.start(CMTime::make(10, 1)));
    bench.append(8.0, bench.white);
    bench.clock->advance(milliseconds(600));
    bench.append(9.0, bench.black);
    bench.append(11.0, bench.white);
    bench.writer->endSession(CMTime::make(12, 1));
    ASSERT_EQ(bench.finish(), Status::completed) << textOf(bench.writer->error());
    EXPECT_EQ(bench.movie().times(), (Ticks{0, 2, 90'000}));
    EXPECT_EQ(bench.movie().duration, 180'000);
}

class FaultyFileTest : public ::testing::TestWithParam<const char*> {
  protected:
    /// Records two seconds onto a file that fails as told; how it ends is the writer's status.
    static Status record(WriterBench& bench) {
        if (!bench.start()) {
            return bench.writer->status();
        }
        for (int index = 0; index < 20; ++index) {
            bench.append(index * 0.1, index % 2 == 0 ? bench.black : bench.white);
        }
        bench.writer->endSession(CMTime::make(2, 1));
        return bench.finish();
    }
};

TEST_P(FaultyFileTest, EveryFailingOperationIsReportedAndLeavesAPlayableFile) {
    const bool staysFull = std::string_view(GetParam()) == "FromThenOn";
    WriterBench sound;
    ASSERT_EQ(record(sound), Status::completed);
    const int operations = sound.file->operations();
    ASSERT_GT(operations, 8);

    for (int failing = 1; failing <= operations; ++failing) {
        FileRecord::Faults faults{failing, failing};
        if (staysFull) {
            faults.lastFailing = std::numeric_limits<int>::max();
        }
        WriterBench bench(smallVideo(), faults);
        int reports = 0;
        const auto observation = bench.writer->observeError([&reports](const std::exception_ptr&) { ++reports; });
        ASSERT_EQ(record(bench), Status::failed) << "operation " << failing;
        EXPECT_EQ(errorNumberOf(*bench.writer), ENOSPC) << textOf(bench.writer->error());
        EXPECT_EQ(reports, 1);
        EXPECT_TRUE(bench.file->isClosed());
        EXPECT_FALSE(bench.input->isReadyForMoreMediaData());
        if (!bench.file->boundaries().empty()) {
            EXPECT_GE(bench.movie(MovieDetail::pictures).pictures.size(), bench.file->boundaries().size());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Disk, FaultyFileTest, ::testing::Values("Once", "FromThenOn"),
                         [](const auto& testCase) { return std::string(testCase.param); });

}  // namespace
}  // namespace zorvane::testing
