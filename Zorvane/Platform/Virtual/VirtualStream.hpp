// A stream of a virtual display.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"
#include "Zorvane/Platform/Virtual/VirtualClock.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

class VirtualPictureSource;
class VirtualSoundSource;

/// The life and the outputs of a stream; pictures and sound come from its two sources, each on a strand of its own, so
/// that a slow receiver of one never holds up the other.
///
///     made --startCapture--> running --stopCapture, or stopped by the desktop--> stopped
///       |                                                                          ^
///       +---- startCapture fails --------------------------------------------------+
class VirtualStream final : public SCStream,
                            public VirtualDisplayObserver,
                            public std::enable_shared_from_this<VirtualStream> {
  public:
    static std::shared_ptr<VirtualStream> make(std::shared_ptr<VirtualDesktop> desktop, const SCContentFilter& filter,
                                               const SCStreamConfiguration& configuration,
                                               std::weak_ptr<SCStreamDelegate> delegate);
    ~VirtualStream() override;

    void addStreamOutput(std::weak_ptr<SCStreamOutput> output, SCStreamOutputType type,
                         DispatchQueue sampleHandlerQueue) override;
    void startCapture(Completion completion) override;
    void stopCapture(Completion completion) override;
    const CMClock* synchronizationClock() const override;

    CGDirectDisplayID displayID() const override { return displayID_; }
    void pictureChanged() override;
    void oddSample(VirtualOddSample kind) override;
    void stopped(std::exception_ptr error) override;
    void soundInterrupted(std::exception_ptr reason) override;

  private:
    enum class State : std::uint8_t { made, running, stopped };

    /// Where the samples of one type go.
    struct Receiver {
        std::weak_ptr<SCStreamOutput> output;
        DispatchQueue queue;
    };

    VirtualStream(std::shared_ptr<VirtualDesktop> desktop, const SCContentFilter& filter,
                  const SCStreamConfiguration& configuration, std::weak_ptr<SCStreamDelegate> delegate);
    void makeSources(const SCContentFilter& filter, const SCStreamConfiguration& configuration);
    std::optional<Receiver>& receiver(SCStreamOutputType type);
    std::exception_ptr obstacleToStart() const;
    void stopSources();
    void deliver(const CMSampleBuffer& sample, SCStreamOutputType type);

    const std::shared_ptr<VirtualDesktop> desktop_;
    const CGDirectDisplayID displayID_;
    const bool capturesAudio_;
    const bool isConfigured_;  // so that pictures can be drawn; told at the start, if any are wanted
    const std::weak_ptr<SCStreamDelegate> delegate_;
    const std::optional<VirtualClock> clock_;
    std::atomic<State> state_{State::made};
    std::shared_ptr<VirtualPictureSource> pictures_;
    std::shared_ptr<VirtualSoundSource> sounds_;
    std::optional<Receiver> screenReceiver_;  // both constant from startCapture on
    std::optional<Receiver> audioReceiver_;
};

}  // namespace zorvane
