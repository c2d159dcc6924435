#include "Zorvane/Platform/Virtual/VirtualAssetWriter.hpp"

#include <gtest/gtest.h>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/NSException.hpp"
#include "Zorvane/Platform/Virtual/ManualClock.hpp"
#include "Zorvane/Platform/Virtual/VirtualScreen.hpp"

namespace zorvane {
namespace {

using Status = AVAssetWriter::Status;

/// A writer with a video input on a manual clock.
struct Writing {
    explicit Writing(VirtualWritingConditions conditions = {})
        : media(VirtualMediaWriting::make(clock, std::move(conditions))),
          writer(media->makeAssetWriter("movie.mov", AVFileType::quickTimeMovie)) {
        writer->add(input);
    }

    bool append(double seconds) { return input->append(picture(seconds)); }
    VirtualMovie movie() const { return media->writers().front()->movie(); }

    CMSampleBuffer picture(double seconds) {
        CVPixelBufferRef image = pool->take();
        std::fill_n(image->mutableBytes(), image->layout().byteSize(), std::byte(64));
        return CMSampleBuffer::video(std::move(image), {.presentationTimeStamp = CMTime::fromSeconds(seconds, 600)},
                                     {});
    }

    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<CVPixelBufferPool> pool = CVPixelBufferPool::make({.width = 8, .height = 8, .bytesPerRow = 32}, 1);
    std::shared_ptr<VirtualMediaWriting> media;
    std::shared_ptr<AVAssetWriter> writer;
    std::shared_ptr<AVAssetWriterInput> input = std::make_shared<AVAssetWriterInput>(AVVideoSettings{.width = 8});
};

TEST(VirtualAssetWriterTest, KeepsWhatWasWrittenAndGivesPicturesBack) {
    Writing writing;
    ASSERT_TRUE(writing.writer->startWriting());
    writing.writer->startSession(CMTime::make(1, 1));
    EXPECT_TRUE(writing.append(1));
    EXPECT_TRUE(writing.append(2)) << "the pool has one picture only";
    writing.writer->endSession(CMTime::make(3, 1));
    bool finished = false;
    writing.writer->finishWriting([&] { finished = true; });
    writing.clock->advance(std::chrono::milliseconds(1));
    EXPECT_TRUE(finished);
    EXPECT_EQ(writing.writer->status(), Status::completed);

    const VirtualMovie movie = writing.movie();
    ASSERT_EQ(movie.tracks.size(), 1u);
    EXPECT_EQ(movie.tracks[0].videoSettings->width, 8);
    ASSERT_EQ(movie.tracks[0].samples.size(), 2u);
    EXPECT_EQ(movie.tracks[0].samples[1].presentationTimeStamp, CMTime::make(2, 1));
    EXPECT_EQ(movie.tracks[0].samples[0].digest, movie.tracks[0].samples[1].digest);
    EXPECT_TRUE(movie.tracks[0].isFinished);
    EXPECT_EQ(movie.sessionStart, CMTime::make(1, 1));
    EXPECT_EQ(movie.sessionEnd, CMTime::make(3, 1));
}

TEST(VirtualAssetWriterTest, RefusesMediaForTheScriptedSpan) {
    Writing writing({.refusesMedia = VirtualSpan{1, 2}});
    EXPECT_FALSE(writing.input->isReadyForMoreMediaData()) << "not started";
    ASSERT_TRUE(writing.writer->startWriting());
    EXPECT_TRUE(writing.append(0));
    writing.clock->advance(std::chrono::seconds(1));
    EXPECT_FALSE(writing.input->isReadyForMoreMediaData());
    EXPECT_FALSE(writing.append(1));
    EXPECT_EQ(writing.writer->error(), nullptr) << "a full queue is no error";
    writing.clock->advance(std::chrono::seconds(1));
    EXPECT_TRUE(writing.append(2));
    EXPECT_EQ(writing.movie().tracks[0].samples.size(), 2u);
}

TEST(VirtualAssetWriterTest, FailsWhereTheScriptSaysAndTellsItsObservers) {
    const auto failure = std::make_exception_ptr(NSError("Test", 5));
    int observed = 0;
    {
        Writing writing({.startError = failure});
        const auto observation =
            writing.writer->observeError([&](std::exception_ptr error) { observed += error == failure; });
        EXPECT_FALSE(writing.writer->startWriting());
    }
    EXPECT_EQ(observed, 1);
    {
        Writing writing({.failingAppend = 1});
        ASSERT_TRUE(writing.writer->startWriting());
        EXPECT_TRUE(writing.append(0));
        EXPECT_FALSE(writing.append(1));
        EXPECT_EQ(writing.writer->status(), Status::failed);
    }
    {
        Writing writing({.breakdown = VirtualBreakdown{3, failure}});
        const auto observation =
            writing.writer->observeError([&](std::exception_ptr error) { observed += error == failure; });
        ASSERT_TRUE(writing.writer->startWriting());
        writing.clock->advance(std::chrono::milliseconds(2999));
        EXPECT_EQ(writing.writer->status(), Status::writing);
        writing.clock->advance(std::chrono::milliseconds(1));
        EXPECT_EQ(writing.writer->status(), Status::failed);
        EXPECT_FALSE(writing.append(3));
    }
    EXPECT_EQ(observed, 2);
}

TEST(VirtualAssetWriterTest, FinishesLateNeverOrWithAnError) {
    const auto failure = std::make_exception_ptr(NSError("Test", 5));
    struct Case {
        VirtualWritingConditions conditions;
        bool completes;
        Status status;
    };
    const Case cases[] = {
        {{.finishDelay = 5}, true, Status::completed},
        {{.finish = VirtualWritingConditions::Finish::never}, false, Status::writing},
        {{.finishDelay = 5, .finishError = failure}, true, Status::failed},
    };
    for (const Case& expected : cases) {
        Writing writing(expected.conditions);
        ASSERT_TRUE(writing.writer->startWriting());
        bool finished = false;
        writing.writer->finishWriting([&] { finished = true; });
        writing.clock->advance(std::chrono::seconds(4));
        EXPECT_FALSE(finished);
        writing.clock->advance(std::chrono::seconds(2));
        EXPECT_EQ(finished, expected.completes);
        EXPECT_EQ(writing.writer->status(), expected.status);
    }
}

TEST(VirtualAssetWriterTest, RaisesInEndSessionAndRefusesInputsAndPresetsOnDemand) {
    Writing writing({.raisesInEndSession = true});
    ASSERT_TRUE(writing.writer->startWriting());
    writing.writer->startSession(kCMTimeZero);
    EXPECT_THROW(writing.writer->endSession(CMTime::make(1, 1)), NSException);

    writing.media->setConditions({.hasAssistant = false, .refusesAudioInput = true});
    const auto next = writing.media->makeAssetWriter("other.mov", AVFileType::quickTimeMovie);
    EXPECT_FALSE(next->canAdd(AVAssetWriterInput(AVAudioSettings{})));
    EXPECT_TRUE(next->canAdd(AVAssetWriterInput(AVVideoSettings{})));
    EXPECT_EQ(writing.media->makeOutputSettingsAssistant(AVOutputSettingsPreset::h264_3840x2160), nullptr);
    EXPECT_EQ(writing.media->writers().size(), 2u);
}

}  // namespace
}  // namespace zorvane
