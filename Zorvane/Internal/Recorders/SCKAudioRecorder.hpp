// Records the sound of the system, or of chosen applications, to a file of sound or to segments.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/Recorders/MediaOutput.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {

/// Everything a recorder of system sound is made of.
struct SCKAudioRecorderParameters {
    std::string id;
    OutputDescription outputDescription;
    SCContentFilter filter;
    /// Leaves this process's own sound out, beside what the filter leaves out.
    bool excludeCurrentProcess = false;
    RecorderContext context;
};

/// The writing side is that of `AudioFileRecorder`; the source is a screen stream. The stream gets no screen output, so
/// that no picture is ever taken: a stream gives sound without one.
class SCKAudioRecorder final : public Recorder {
  public:
    /// Throws `ZVError` when capturing the screen is not permitted or the output can't be set up, and what the platform
    /// throws.
    explicit SCKAudioRecorder(SCKAudioRecorderParameters parameters);
    ~SCKAudioRecorder() override;

    const std::string& id() const override { return id_; }
    Task<> prepare() override;
    Task<> cancel() override;
    /// Throws also when the stream can't be stopped.
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override;
    RecorderStatistics statistics() const override;

  private:
    class StreamCoordinator;

    void setUpStream(const SCKAudioRecorderParameters& parameters, const SCStreamConfiguration& configuration);
    std::unique_ptr<AudioSamplePath> setUpWriting(const SCKAudioRecorderParameters& parameters,
                                                  const SCStreamConfiguration& configuration);

    const std::string id_;
    const Logger logger_;
    const StableRecordingInterval recordingInterval_;
    const DispatchQueue audioSampleBufferQueue_;
    const std::string levelSource_;  // for people
    const std::string levelName_;
    std::optional<MediaOutput> output_;
    std::shared_ptr<StreamCoordinator> coordinator_;
    std::shared_ptr<SCStream> stream_;
};

/// Whose sound is recorded: with `includedProcessIDs` that of these processes, else all but that of
/// `excludedProcessIDs`. Ids that no application has fall away; throws a `ZVError` (internal error) when none of the
/// included ones is left or there is no display, and what retrieving the shareable content throws.
Task<SCContentFilter> createContentFilter(std::optional<std::vector<std::int32_t>> includedProcessIDs,
                                          std::vector<std::int32_t> excludedProcessIDs, Logger logger);

}  // namespace zorvane
