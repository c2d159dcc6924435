// A stream may deliver until its stop has completed: what comes last must not set anything off.
#include <gtest/gtest.h>

#include <cstring>

#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"
#include "tests/Support/PictureSource.hpp"
#include "tests/Support/ScreenRecording.hpp"

namespace zorvane {
namespace {

/// Delivers one picture as it starts, and another one while it stops.
class LatePictureStream final : public SCStream {
  public:
    explicit LatePictureStream(std::shared_ptr<CVPixelBufferPool> pool) : pool_(std::move(pool)) {}

    void addStreamOutput(std::weak_ptr<SCStreamOutput> output, SCStreamOutputType, DispatchQueue queue) override {
        output_ = std::move(output);
        queue_ = std::move(queue);
    }
    void startCapture(Completion completion) override {
        completion(nullptr);
        deliver();
    }
    void stopCapture(Completion completion) override {
        deliver();
        completion(nullptr);
    }
    const CMClock* synchronizationClock() const override { return &clock_; }

  private:
    void deliver() {
        const CVPixelBufferRef picture = pool_->take();
        std::memset(picture->mutableBytes(), 0, picture->layout().byteSize());
        const CMSampleTimingInfo timing{.presentationTimeStamp = hostTimeClockTime()};
        const CMSampleBuffer sample = CMSampleBuffer::video(picture, timing, {.frameStatus = 0});
        queue_->sync([&] { output_.lock()->stream(*this, sample, SCStreamOutputType::screen); });
    }

    const HostTimeSynchronizationClock clock_;
    const std::shared_ptr<CVPixelBufferPool> pool_;
    std::weak_ptr<SCStreamOutput> output_;
    std::optional<DispatchQueue> queue_;
};

class LatePictureCapture final : public SCScreenCapture {
  public:
    void getShareableContent(SCShareableContentScope, ContentHandler) override {}
    std::shared_ptr<SCStream> makeStream(const SCContentFilter&, const SCStreamConfiguration&,
                                         std::weak_ptr<SCStreamDelegate>) override {
        return std::make_shared<LatePictureStream>(pool);
    }
    void restartCaptureService(std::function<void(std::exception_ptr error)>) override {}

    const std::shared_ptr<CVPixelBufferPool> pool = CVPixelBufferPool::make(testing::bgraLayout(320, 200), 6);
};

class ScreenRecorderLatePictureTest : public testing::ScreenRecordingTest {
  protected:
    ScreenRecorderLatePictureTest() {
        Platform platform = makeVirtualPlatform(desktop, writing);
        platform.screenCapture = capture;
        Platform::install(std::move(platform));
    }

    const std::shared_ptr<LatePictureCapture> capture = std::make_shared<LatePictureCapture>();
};

TEST_F(ScreenRecorderLatePictureTest, AfterTheFinishNothingIsRepeatedAndNoPictureIsHeld) {
    makeRecorder();
    prepare();
    start();
    advance(0.5);
    stop();
    advance(5);
    EXPECT_EQ(log.count(ZVLogLevel::debug, "Repeating video frame."), 0u);
    EXPECT_EQ(capture->pool->outstanding(), 0u);
}

}  // namespace
}  // namespace zorvane
