#include "Zorvane/Platform/FFmpeg/WriterQueue.hpp"

#include <gtest/gtest.h>

#include "tests/Support/PictureSource.hpp"
#include "tests/Support/SoundSource.hpp"

namespace zorvane::testing {
namespace {

using Kind = WriterQueue::Work::Kind;

TEST(WriterQueueTest, HandsOutSoundBeforePicturesAndAllOfItBeforeTheFinish) {
    const auto queue = std::make_shared<WriterQueue>();
    const auto pictures = queue->addInput(AVMediaType::video);
    const auto sound = queue->addInput(AVMediaType::audio);
    queue->open();
    queue->startSession(kCMTimeZero);
    const CVPixelBufferRef picture = makeGreyPicture(16, 16, 0);
    ASSERT_TRUE(pictures->append(sampleAt(0.0, picture)));
    ASSERT_TRUE(pictures->append(sampleAt(1.0, picture)));
    ASSERT_TRUE(sound->append(soundAt(CMTime::make(1, 2), stereo48, 480, steady(0))));
    EXPECT_EQ(queue->next().input, 1U);
    EXPECT_EQ(queue->next().input, 0U);
    ASSERT_TRUE(sound->append(soundAt(CMTime::make(1, 1), stereo48, 480, steady(0))));
    queue->requestFinish();
    EXPECT_FALSE(sound->append(soundAt(CMTime::make(2, 1), stereo48, 480, steady(0))));
    EXPECT_EQ(queue->next().input, 1U);
    const WriterQueue::Work last = queue->next();
    EXPECT_EQ(last.kind, Kind::sample);
    EXPECT_EQ(last.sample.presentationTimeStamp(), CMTime::make(1, 1));
    EXPECT_EQ(queue->next().kind, Kind::finish);
}

TEST(WriterQueueTest, FullOrFinishedInputLeavesTheOtherOpen) {
    const auto queue = std::make_shared<WriterQueue>();
    const auto pictures = queue->addInput(AVMediaType::video);
    const auto sound = queue->addInput(AVMediaType::audio);
    queue->open();
    const CVPixelBufferRef picture = makeGreyPicture(16, 16, 0);
    while (pictures->isReadyForMoreMediaData()) {
        ASSERT_TRUE(pictures->append(sampleAt(0.0, picture)));
    }
    EXPECT_TRUE(sound->isReadyForMoreMediaData());
    sound->markAsFinished();
    EXPECT_FALSE(sound->append(soundAt(kCMTimeZero, stereo48, 480, steady(0))));
    queue->startSession(kCMTimeZero);
    EXPECT_EQ(queue->next().kind, Kind::sample);
    EXPECT_TRUE(pictures->isReadyForMoreMediaData());
    queue->requestStop();
    EXPECT_EQ(queue->next().kind, Kind::stop);
}

}  // namespace
}  // namespace zorvane::testing
