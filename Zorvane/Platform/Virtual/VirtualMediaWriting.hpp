// Media writing into memory, with every fault that a real writer may have.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AVFoundation/AVMediaWriting.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"

namespace zorvane {

class VirtualAssetWriter;

/// Seconds since a writer's `startWriting`.
struct VirtualSpan {
    double from = 0;
    double until = 0;
};

/// An error at a time, in seconds since a writer's `startWriting`.
struct VirtualBreakdown {
    double after = 0;
    std::exception_ptr error;
};

/// What the presets yield and what goes wrong. The default: nothing.
struct VirtualWritingConditions {
    enum class Finish : std::uint8_t { succeeds, never };

    // Presets.
    bool hasAssistant = true;
    bool hasAudioSettings = true;
    bool hasVideoSettings = true;
    std::optional<std::int32_t> audioChannels = 2;

    // Writers, in the order of their lives.
    std::exception_ptr makeError;
    bool refusesVideoInput = false;
    bool refusesAudioInput = false;
    std::exception_ptr startError;
    std::optional<VirtualSpan> refusesMedia;  ///< no input is ready for more media in this span
    std::optional<std::size_t>
        failingAppend;  ///< this append, counted from 0 over all tracks, fails and spoils the file
    std::optional<VirtualBreakdown> breakdown;  ///< the writer fails by itself
    bool raisesInEndSession = false;            ///< `NSException`
    Finish finish = Finish::succeeds;
    double finishDelay = 0;  ///< seconds
    std::exception_ptr finishError;
};

/// Keeps every writer it has made. Nothing touches the disk. Any thread may call.
class VirtualMediaWriting final : public AVMediaWriting {
  public:
    static std::shared_ptr<VirtualMediaWriting> make(std::shared_ptr<HostClock> clock,
                                                     VirtualWritingConditions conditions = {});

    std::unique_ptr<AVOutputSettingsAssistant> makeOutputSettingsAssistant(AVOutputSettingsPreset preset) override;
    std::shared_ptr<AVAssetWriter> makeAssetWriter(const std::filesystem::path& url, AVFileType fileType) override;
    std::shared_ptr<AVAssetWriter> makeSegmentWriter(AVAssetSegmenting segmenting) override;

    /// For presets and writers made from now on.
    void setConditions(VirtualWritingConditions conditions);

    /// All writers so far, the oldest first.
    std::vector<std::shared_ptr<VirtualAssetWriter>> writers() const;

  private:
    VirtualMediaWriting(std::shared_ptr<HostClock> clock, VirtualWritingConditions conditions);
    VirtualWritingConditions conditions() const;
    template <class Output>
    std::shared_ptr<AVAssetWriter> makeWriter(Output output);

    const std::shared_ptr<HostClock> clock_;
    mutable Mutex mutex_;
    VirtualWritingConditions conditions_ ZV_GUARDED_BY(mutex_);
    std::vector<std::shared_ptr<VirtualAssetWriter>> writers_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
