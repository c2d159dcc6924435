#include <gtest/gtest.h>
#include "Zorvane/Platform/FFmpeg/FFmpegMediaWriting.hpp"
#include "tests/Support/MovieReader.hpp"
#include "tests/Support/PictureSource.hpp"
#include <filesystem>
#include <future>
namespace zorvane::testing {
TEST(FFmpegAssetWriterTest, WritesAMovieThatLastsAsLongAsTheSession) {
    const std::filesystem::path path = ::testing::TempDir() + "zorvane-writer-test.mp4";
    std::filesystem::remove(path);
    FFmpegMediaWriting media;
    auto writer = media.makeAssetWriter(path, AVFileType::mpeg4);
    AVVideoSettings settings; settings.width=321; settings.height=241;
    auto input = std::make_shared<AVAssetWriterInput>(settings);
    writer->add(input);
    if (!writer->startWriting()) std::rethrow_exception(writer->error());
    writer->startSession(CMTime::make(100,1));
    auto a = makeGreyPicture(321,241,255), b = makeGreyPicture(321,241,0);
    for (int i = 0; i < 100; ++i) {
        while (!input->isReadyForMoreMediaData()) std::this_thread::yield();
        input->append(sampleAt(CMTime::make(100*30+i,30), i/10 % 2 ? a : b));
    }
    writer->endSession(CMTime::make(105,1));
    std::promise<void> p; writer->finishWriting([&]{p.set_value();}); p.get_future().wait();
    if (writer->error()) std::rethrow_exception(writer->error());
    auto m = readMovie(path, MovieDetail::pictures);
    EXPECT_EQ(m.duration, 450000);
    EXPECT_EQ(m.packets.size(), 100u);
    EXPECT_EQ(m.width, 321);
    EXPECT_EQ(m.pictures.size(), 100u);
}
}
