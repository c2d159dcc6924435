#include "Zorvane/Platform/Foundation/OutputFile.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "WriterBench.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "tests/Support/FileSizeLimit.hpp"

namespace zorvane::testing {
namespace {

class OutputFileTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = ::testing::TempDir() + "zorvane-file-XXXXXX";
        directory_ = ::mkdtemp(pattern.data());
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::filesystem::path path() const { return directory_ / "movie.mov"; }

    std::string content() const {
        std::ifstream stream(path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static std::span<const std::byte> bytes(std::string_view text) { return std::as_bytes(std::span(text)); }

    std::filesystem::path directory_;
};

TEST_F(OutputFileTest, GrowsAtItsEndAndIsItsOwnersAlone) {
    const auto file = makeOutputFile(path());
    file->append(bytes("abcdef"));
    file->append(bytes("gh"));
    file->overwrite(1, bytes("XY"));
    EXPECT_EQ(content(), "aXYdefgh");
    file->truncate(4);
    file->append(bytes("!"));
    file->sync();
    file->close();
    EXPECT_EQ(content(), "aXYd!");
    struct stat status {};
    ASSERT_EQ(::stat(path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(OutputFileTest, NeverTouchesAFileThatExists) {
    std::ofstream(path()) << "mine";
    try {
        makeOutputFile(path());
        FAIL() << "created over an existing file";
    } catch (const NSError& error) {
        EXPECT_EQ(error.domain(), NSPOSIXErrorDomain);
        EXPECT_EQ(error.code(), EEXIST);
        EXPECT_NE(error.localizedDescription().find(path().string()), std::string::npos);
    }
    EXPECT_EQ(content(), "mine");
}

TEST_F(OutputFileTest, RefusedWriteIsAnErrorThatNamesTheFile) {
    const auto file = makeOutputFile(path());
    const FileSizeLimit limit(8);
    try {
        file->append(bytes("more than eight"));
        FAIL() << "wrote more than it may";
    } catch (const NSError& error) {
        EXPECT_EQ(error.code(), EFBIG);
        EXPECT_NE(error.localizedDescription().find(path().string()), std::string::npos);
    }
}

TEST_F(OutputFileTest, MovieIsWhatAnIndependentProgramSaysItIs) {
    if (std::system("command -v ffprobe > /dev/null 2>&1") != 0) {
        GTEST_SKIP() << "ffprobe is not installed";
    }
    AVVideoSettings settings = smallVideo(97, 65);
    const auto writer = FFmpegMediaWriting().makeAssetWriter(path(), AVFileType::quickTimeMovie);
    const auto input = std::make_shared<AVAssetWriterInput>(settings);
    writer->add(input);
    ASSERT_TRUE(writer->startWriting());
    writer->startSession(CMTime::make(7, 1));
    const CVPixelBufferRef picture = makeGreyPicture(97, 65, 200);
    for (const double time : {7.0, 7.5, 8.25}) {
        ASSERT_TRUE(input->append(sampleAt(time, picture)));
        Activity::waitUntilIdle();
    }
    writer->endSession(CMTime::make(9, 1));
    writer->finishWriting([] {});
    Activity::waitUntilIdle();
    ASSERT_EQ(writer->status(), AVAssetWriter::Status::completed);

    const std::string command =
        "ffprobe -v error -count_frames -of default=nw=1 -show_entries "
        "stream=codec_name,profile,width,height,color_range,color_space,color_transfer,color_primaries,start_pts,"
        "duration_ts,nb_read_frames '" +
        path().string() + "'";
    std::string said;
    FILE* const pipe = ::popen(command.c_str(), "r");
    for (int letter = std::fgetc(pipe); letter != EOF; letter = std::fgetc(pipe)) {
        said += static_cast<char>(letter);
    }
    EXPECT_EQ(::pclose(pipe), 0);
    EXPECT_EQ(said,
              "codec_name=h264\nprofile=High\nwidth=97\nheight=65\ncolor_range=tv\ncolor_space=bt709\n"
              "color_transfer=bt709\ncolor_primaries=bt709\nstart_pts=0\nduration_ts=180000\nnb_read_frames=3\n");
}

}  // namespace
}  // namespace zorvane::testing
