#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "Zorvane/Internal/AVAssetWriterInputBufferAdaptor.hpp"
#include "Zorvane/Internal/AVAssetWriterInputDropAdaptor.hpp"
#include "Zorvane/Internal/UnboundedBackpressureBuffer.hpp"
#include "tests/Support/FakeAssetWriter.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/Timeline.hpp"

namespace zorvane {
namespace {

using testing::at;
using testing::picture;
using testing::sound;
using Result = UnboundedBackpressureBuffer<int>::HandlerResult;

class UnboundedBackpressureBufferTest : public ::testing::Test {
  protected:
    /// Takes items while `room` lasts.
    UnboundedBackpressureBuffer<int> buffer{[this](int item) {
        if (room == 0) {
            return Result::notReadyForItem;
        }
        --room;
        taken.push_back(item);
        return Result::handledItem;
    }};
    int room = 0;
    std::vector<int> taken;
};

TEST_F(UnboundedBackpressureBufferTest, AReadyReceiverGetsEachItemAtOnce) {
    room = 100;
    EXPECT_EQ(buffer.append(1), 0u);
    EXPECT_EQ(buffer.append(2), 0u);
    EXPECT_EQ(taken, (std::vector<int>{1, 2}));
    EXPECT_EQ(buffer.partialFlush(), 0u);
}

TEST_F(UnboundedBackpressureBufferTest, RefusedItemsWaitInOrder) {
    EXPECT_EQ(buffer.append(1), 1u);
    EXPECT_EQ(buffer.append(2), 2u);
    room = 1;
    EXPECT_EQ(buffer.partialFlush(), 1u);
    EXPECT_EQ(buffer.append(3), 2u);
    EXPECT_EQ(buffer.count(), 2u);
    room = 100;
    EXPECT_EQ(buffer.append(4), 0u);
    EXPECT_EQ(taken, (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(UnboundedBackpressureBufferTest, AnyTrafficComesOutInTheOrderInWhichItWentIn) {
    std::vector<int> appended;
    for (int round = 0; round < 300; ++round) {
        for (int item = 0; item < round % 23; ++item) {
            appended.push_back(static_cast<int>(appended.size()));
            buffer.append(appended.back());
        }
        room = round % 19;
        buffer.partialFlush();
    }
    room = 1'000'000;
    buffer.partialFlush();
    EXPECT_EQ(taken, appended);
}

TEST(UnboundedBackpressureBufferLifetimeTest, AnItemIsReleasedOnceItIsHandled) {
    bool isReady = false;
    UnboundedBackpressureBuffer<std::shared_ptr<int>> buffer([&isReady](const std::shared_ptr<int>&) {
        using SharedResult = UnboundedBackpressureBuffer<std::shared_ptr<int>>::HandlerResult;
        return isReady ? SharedResult::handledItem : SharedResult::notReadyForItem;
    });
    const auto item = std::make_shared<int>(1);
    buffer.append(item);
    EXPECT_EQ(item.use_count(), 2);
    isReady = true;
    buffer.partialFlush();
    EXPECT_EQ(item.use_count(), 1);
}

TEST(UnboundedBackpressureBufferConcurrencyTest, AFlushAmidAppendsLosesAndReordersNothing) {
    std::vector<int> taken;
    int calls = 0;
    UnboundedBackpressureBuffer<int> buffer([&](int item) {
        if (++calls % 3 == 0) {
            return Result::notReadyForItem;
        }
        taken.push_back(item);
        return Result::handledItem;
    });
    std::jthread capture([&buffer] {
        for (int item = 0; item < 1000; ++item) {
            buffer.append(item);
        }
    });
    for (int round = 0; round < 300; ++round) {
        buffer.partialFlush();
    }
    capture.join();
    while (buffer.partialFlush() > 0) {
    }
    ASSERT_EQ(taken.size(), 1000u);
    for (int item = 0; item < 1000; ++item) {
        EXPECT_EQ(taken[static_cast<std::size_t>(item)], item);
    }
}

class AVAssetWriterInputAdaptorsTest : public ::testing::Test {
  protected:
    std::vector<double> written() const {
        std::vector<double> times;
        for (const CMSampleBuffer& sample : fake.sink->samples) {
            times.push_back(sample.presentationTimeStamp().seconds());
        }
        return times;
    }

    LogCapture log;
    testing::FakeInput fake;
};

TEST_F(AVAssetWriterInputAdaptorsTest, SoundWaitsWhileTheInputIsNotReady) {
    AVAssetWriterInputBufferAdaptor adaptor(fake.input, log.logger<AVAssetWriterInputBufferAdaptor>());
    adaptor.append(sound(at(1), 480));
    EXPECT_EQ(log.messages().size(), 0u);

    fake.sink->isReady = false;
    adaptor.append(sound(at(2), 480));
    adaptor.append(sound(at(3), 480));
    for (const char* count : {"1", "2"}) {
        EXPECT_TRUE(log.has(ZVLogLevel::debug, "Experiencing backpressure, buffering.", {{"itemsBuffered", count}}));
    }
    EXPECT_EQ(adaptor.unboundedBackpressureBuffer().partialFlush(), 2u);

    fake.sink->isReady = true;
    adaptor.append(sound(at(4), 480));
    EXPECT_EQ(written(), (std::vector<double>{1, 2, 3, 4}));
}

TEST_F(AVAssetWriterInputAdaptorsTest, AFailedAppendDoesNotHoldUpTheSoundBehindIt) {
    AVAssetWriterInputBufferAdaptor adaptor(fake.input, log.logger<AVAssetWriterInputBufferAdaptor>());
    fake.sink->fails = true;
    adaptor.append(sound(at(1), 480));
    fake.sink->fails = false;
    adaptor.append(sound(at(2), 480));
    EXPECT_EQ(written(), (std::vector<double>{2}));
    EXPECT_EQ(adaptor.unboundedBackpressureBuffer().count(), 0u);
}

TEST_F(AVAssetWriterInputAdaptorsTest, APictureIsTakenOrLostAndTheLogSaysHow) {
    AVAssetWriterInputDropAdaptor adaptor(fake.input, log.logger<AVAssetWriterInputDropAdaptor>());
    EXPECT_TRUE(adaptor.append(picture(at(1))));
    EXPECT_EQ(log.messages().size(), 0u);

    fake.sink->isReady = false;
    EXPECT_FALSE(adaptor.append(picture(at(2))));
    EXPECT_TRUE(log.has(ZVLogLevel::info, "AVAssetWriterInput isn't ready, dropping frame.",
                        {{"samplePTS", at(2).logDescription()}}));

    fake.sink->isReady = true;
    fake.sink->fails = true;
    EXPECT_FALSE(adaptor.append(picture(at(3))));
    EXPECT_TRUE(log.has(ZVLogLevel::warning, "Failed to append to AVAssetWriterInput.",
                        {{"samplePTS", at(3).logDescription()}}));
    EXPECT_EQ(written(), (std::vector<double>{1}));
}

}  // namespace
}  // namespace zorvane
