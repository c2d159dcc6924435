// Watches the cursor during a recording.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/Recorders/CursorRecorder/CursorTimeline.hpp"
#include "Zorvane/Platform/CoreVideo/CVDisplayLink.hpp"

namespace zorvane {

/// Fills a timeline from `prepare` on, at each refresh of the display under the pointer. Writes no file.
///
/// Nothing that goes wrong meanwhile ends the recording: the cursor stays what it was, and a warning says so now and
/// then.
class CursorRecorder final : public Recorder {
  public:
    /// Throws `ZVError` if there is no display to keep step with.
    CursorRecorder(std::string id, const Logger& logger);
    ~CursorRecorder() override;

    const std::string& id() const override { return id_; }
    /// Can be read for as long as somebody holds it.
    const std::shared_ptr<CursorTimeline>& timeline() const { return timeline_; }

    Task<> prepare() override;
    Task<> cancel() override;
    /// Takes one last look when the display link has stopped, so that the timeline reaches beyond the recording's end:
    /// whoever asks it about the last events needs not wait for another refresh.
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override;

  private:
    class Sampler;

    std::shared_ptr<CVDisplayLink> makeDisplayLink() const;
    void require(CVReturn code, const char* failure, const std::string& details) const;
    void stop() const;

    const std::string id_;
    const CGDirectDisplayID displayId_;  // where the link starts
    const Logger logger_;
    const std::shared_ptr<CursorTimeline> timeline_ = std::make_shared<CursorTimeline>();
    const std::shared_ptr<CVDisplayLink> displayLink_;
    const std::shared_ptr<Sampler> sampler_;  // shared with the link
};

}  // namespace zorvane
