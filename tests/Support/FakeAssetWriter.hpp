// A writer and its inputs that keep what they are given and refuse when they are told to.
#pragma once

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriterInput.hpp"

namespace zorvane::testing {

/// The far side of an input.
class FakeSink final : public AVAssetWriterInputSink {
  public:
    bool isReadyForMoreMediaData() const override { return isReady; }
    bool append(const CMSampleBuffer& sampleBuffer) override {
        if (fails) {
            return false;
        }
        samples.push_back(sampleBuffer);
        return true;
    }
    void markAsFinished() override {}

    std::atomic<bool> isReady = true;
    std::atomic<bool> fails = false;
    std::vector<CMSampleBuffer> samples;
};

/// An input on a fake sink.
struct FakeInput {
    FakeInput() { input->attach(sink); }

    std::shared_ptr<FakeSink> sink = std::make_shared<FakeSink>();
    std::shared_ptr<AVAssetWriterInput> input = std::make_shared<AVAssetWriterInput>(AVAudioSettings());
};

/// A writer without a file. Finishing lasts until `finish` is called.
class FakeAssetWriter final : public AVAssetWriter {
  public:
    FakeAssetWriter() : AVAssetWriter("/fake") {}

    /// Ends a `finishWriting` that waits, with an error or null.
    void finish(std::exception_ptr error = nullptr) { std::exchange(done_, nullptr)(std::move(error)); }
    bool isFinishing() const { return done_ != nullptr; }

    std::exception_ptr startError;

  private:
    bool canAddInput(const AVAssetWriterInput&) const override { return true; }
    std::shared_ptr<AVAssetWriterInputSink> addInput(const AVAssetWriterInput&) override {
        return std::make_shared<FakeSink>();
    }
    void doStartWriting() override {
        if (startError) {
            std::rethrow_exception(startError);
        }
    }
    void doStartSession(CMTime) override {}
    void doEndSession(CMTime) override {}
    void doFinishWriting(std::function<void(std::exception_ptr)> done) override { done_ = std::move(done); }

    std::function<void(std::exception_ptr)> done_;
};

}  // namespace zorvane::testing
