// One stream of segments: its writer and what becomes of its segments.
#pragma once

#include <memory>
#include <optional>

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Recorders/SegmentedCoordinator.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"

namespace zorvane {

/// Owns a writer of segments and the coordinator behind it. A stream without an input is none: starting and finishing
/// it does nothing.
class SegmentedAssetWriter {
  public:
    /// Segments of the coordinator's target duration. Throws what the platform throws.
    explicit SegmentedAssetWriter(SegmentedCoordinator::Parameters parameters);

    AVAssetWriter& assetWriter() const { return *assetWriter_; }
    bool isUsed() const { return assetWriter_->hasInputs(); }

    /// Throws the writer's error when it can't start.
    void startWriting();

    /// Ends the writing and closes the playlist, which lists what was written before an error too. Throws the error
    /// that spoilt the stream.
    Task<std::optional<MediaPlaylistFile>> finishWriting();

  private:
    const std::shared_ptr<SegmentedCoordinator> coordinator_;
    const std::shared_ptr<AVAssetWriter> assetWriter_;
};

}  // namespace zorvane
