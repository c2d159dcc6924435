#include "Zorvane/Internal/AVAssetWriterSafeCalls.hpp"

#include <gtest/gtest.h>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "tests/Support/FakeAssetWriter.hpp"
#include "tests/Support/Timeline.hpp"

namespace zorvane {
namespace {

using testing::at;

class AVAssetWriterSafeCallsTest : public ::testing::Test {
  protected:
    std::shared_ptr<testing::FakeAssetWriter> writer = std::make_shared<testing::FakeAssetWriter>();
};

TEST_F(AVAssetWriterSafeCallsTest, WhatTheWriterRaisesArrivesAsAnError) {
    EXPECT_THROW(safe_endSession(*writer, at(1)), NSError);
    EXPECT_THROW(safe_finishWriting(writer).get(), NSError);
    EXPECT_TRUE(safe_startWriting(*writer));
    EXPECT_THROW(safe_startWriting(*writer), NSError);
    writer->startSession(at(1));
    EXPECT_NO_THROW(safe_endSession(*writer, at(2)));
}

TEST_F(AVAssetWriterSafeCallsTest, AStartThatFailsIsFalseAndTheWriterSaysWhy) {
    writer->startError = std::make_exception_ptr(NSError("disk", 1));
    EXPECT_FALSE(safe_startWriting(*writer));
    EXPECT_TRUE(writer->error());
}

TEST_F(AVAssetWriterSafeCallsTest, FinishingWaitsForTheWriterAlsoInACancelledTask) {
    safe_startWriting(*writer);
    std::atomic<bool> ended = false;
    const auto finish = [](std::shared_ptr<AVAssetWriter> finished, std::atomic<bool>& end) -> Task<> {
        co_await safe_finishWriting(std::move(finished));
        end = true;
    };
    const TaskHandle<> handle = spawn(finish(writer, ended));
    Activity::waitUntilIdle();
    handle.cancel();
    Activity::waitUntilIdle();
    EXPECT_FALSE(ended);

    writer->finish();
    handle.value().get();
    EXPECT_TRUE(ended);
    EXPECT_EQ(writer->status(), AVAssetWriter::Status::completed);
}

}  // namespace
}  // namespace zorvane
