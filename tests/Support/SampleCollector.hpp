// A receiver of streams that notes what comes, and that a test can wait on.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane::test {

/// What is noted of one sample.
struct CollectedSample {
    SCStreamOutputType type = SCStreamOutputType::screen;
    bool isValid = false;
    std::optional<SCFrameStatus> status;
    CMTime stamp;                              ///< on the stream's clock
    double hostTime = 0;                       ///< seconds; 0 when the stream has no clock
    std::optional<CVPixelLayout> layout;       ///< of a picture
    std::uint32_t center = 0;                  ///< the pixel in the middle
    std::optional<std::uint32_t> frameNumber;  ///< of a test pattern
    std::shared_ptr<const AVAudioPCMBuffer> sound;

    bool isPicture() const { return status == SCFrameStatus::complete && layout.has_value(); }
};

/// Both output and delegate. Pictures go back to their pool, unless the collector is told to keep them.
class SampleCollector final : public SCStreamOutput, public SCStreamDelegate {
  public:
    void stream(SCStream& stream, const CMSampleBuffer& sampleBuffer, SCStreamOutputType type) override;
    void streamDidStopWithError(SCStream& stream, std::exception_ptr error) override;
    void streamDidBecomeInactive(SCStream& stream, std::exception_ptr reason) override;
    void streamDidBecomeActive(SCStream& stream) override;

    void keepBuffers(bool keep);
    std::size_t keptBuffers() const;

    std::vector<CollectedSample> samples() const;
    std::vector<CollectedSample> pictures() const;
    std::vector<std::exception_ptr> stops() const;
    /// Why sound went away, and null for each time that it came back.
    std::vector<std::exception_ptr> absences() const;

    /// Blocks until `condition` holds for the samples so far; false when it doesn't within ten seconds.
    bool waitUntil(const std::function<bool(const std::vector<CollectedSample>&)>& condition) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool keepsBuffers_ = false;
    std::vector<CMSampleBuffer> kept_;
    std::vector<CollectedSample> samples_;
    std::vector<std::exception_ptr> stops_;
    std::vector<std::exception_ptr> absences_;
};

/// The code of an `NSError` of the stream domain; nothing for null and for any other error.
std::optional<SCStreamErrorCode> streamErrorCode(const std::exception_ptr& error);

/// The completion of a start or stop, and how it ended.
class CompletionResult {
  public:
    SCStream::Completion handler();
    bool hasCompleted() const;
    /// Blocks until the completion was called; fails the test when it isn't within ten seconds.
    std::exception_ptr wait() const;

  private:
    struct Shared {
        std::mutex mutex;
        std::condition_variable changed;
        int calls = 0;
        std::exception_ptr error;
    };
    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

}  // namespace zorvane::test
