#include "tests/Desktop/DisplayRecordingFixture.hpp"

#include <future>
#include <optional>

#include "Zorvane/Platform/FFmpeg/FFmpegMediaWriting.hpp"

namespace zorvane::testing {
namespace {

using AbortReason = ZVRecorder::AbortReason;

TEST_F(DisplayRecordingTest, ADisplayThatChangesItsModeEndsItWithAllThatWasThere) {
    std::promise<AbortReason> aborted;
    ZVRecorder recorder = makeRecorder("bundle", [&](const AbortReason& reason) { aborted.set_value(reason); });
    begin(recorder);
    pass(0.3);

    client_.resizeScreen(320, 240);

    const AbortReason reason = aborted.get_future().get();
    EXPECT_EQ(reason.kind(), AbortReason::Kind::interrupted) << reason.logErrorDescription();
    EXPECT_NE(localizedDescription(reason.error()).find("display"), std::string::npos);
    const ZVRecorder::Result result = recorder.stop().get();
    EXPECT_EQ(result, reason.result());
    const auto movie = readMovie(movieOf(result));
    EXPECT_EQ(movie.width, 640);
    EXPECT_EQ(movie.height, 480);
    EXPECT_GE(lengthOf(recorder), 0.3);
    EXPECT_NEAR(static_cast<double>(movie.duration) / movie.timescale, lengthOf(recorder), 0.001);
}

TEST_F(DisplayRecordingTest, DestroyingItsRecorderLeavesAMovieWithoutItsLastSecond) {
    std::optional<ZVRecorder> recorder(makeRecorder("bundle"));
    const auto bundle = recorder->bundleURL();
    begin(*recorder);
    const double from = recorder->statistics().recordFrom;
    for (std::uint32_t step = 0; step < 50; ++step) {
        client_.fill({0, 0, 640, 480}, step * 0x050505);
        pass(0.05);
    }
    const double until = std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();

    recorder.reset();

    std::vector<std::filesystem::path> files(std::filesystem::directory_iterator(bundle), {});
    ASSERT_EQ(files.size(), 1U) << "a movie, and no manifest";
    const auto info = ZVMediaInfo::read(files.front());
    EXPECT_GT(info.duration.value_or(0), until - from - 1);
}

TEST_F(DisplayRecordingTest, AMissingEncoderIsNamedWithWhatToInstall) {
    FFmpegWriterParts parts;
    parts.h264Encoder = "absent264";
    Platform platform;
    platform.mediaWriting = std::make_shared<FFmpegMediaWriting>(parts);
    Platform::install(platform);
    ZVRecorder recorder = makeRecorder("bundle");
    try {
        recorder.prepare().get();
        FAIL() << "it recorded with an encoder that isn't there";
    } catch (const std::exception& error) {
        const std::string text = error.what();
        EXPECT_NE(text.find("absent264 is missing. Install"), std::string::npos) << text;
    }
}

}  // namespace
}  // namespace zorvane::testing
