// A stream of a Linux desktop: pictures and sound, which come from different services.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSound.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"

namespace zorvane {

/// What a stream is made of.
struct LinuxStreamParts {
    std::shared_ptr<SCScreenCapture> screens;
    std::shared_ptr<PipeWireSession> pipeWire;
    std::shared_ptr<AVAudioConverting> converting;
};

/// Joins a stream of pictures and the system's sound. Sound is captured if there is an output for it, and pictures
/// unless there is one for sound only: pictures need no PipeWire then, and sound needs no screen. All times are on the
/// host clock.
///
///     made --startCapture--> running --stopCapture--> ended
///                               `--------error--------^  (told to the start's completion, later to the delegate)
///
/// The start completes when both have started, or with the first error. Later an error of the pictures ends the stream;
/// when PipeWire ends, the stream goes on and its delegate hears of it.
///
/// Not to be destroyed inside a sample handler of its own.
class LinuxStream final : public SCStream, public std::enable_shared_from_this<LinuxStream> {
  public:
    static std::shared_ptr<LinuxStream> make(LinuxStreamParts parts, const SCContentFilter& filter,
                                             const SCStreamConfiguration& configuration,
                                             std::weak_ptr<SCStreamDelegate> delegate);
    ~LinuxStream() override;

    void addStreamOutput(std::weak_ptr<SCStreamOutput> output, SCStreamOutputType type,
                         DispatchQueue sampleHandlerQueue) override;
    void startCapture(Completion completion) override;
    void stopCapture(Completion completion) override;
    const CMClock* synchronizationClock() const override { return &clock_; }

  private:
    enum class State { made, running, ended };
    class PictureRelay;

    /// Where samples of a type go.
    struct Receiver {
        std::weak_ptr<SCStreamOutput> output;
        DispatchQueue queue;
    };

    LinuxStream(LinuxStreamParts parts, const SCContentFilter& filter, const SCStreamConfiguration& configuration,
                std::weak_ptr<SCStreamDelegate> delegate);
    PipeWireSystemSound::Handlers soundHandlers();

    void startPictures(Completion completion);
    void failToStart(Completion completion, std::exception_ptr error);
    void picturesEnded(std::exception_ptr error);
    bool change(State from, State to);
    void stopSound();

    const LinuxStreamParts parts_;
    const SCContentFilter filter_;
    const SCStreamConfiguration configuration_;
    const std::weak_ptr<SCStreamDelegate> delegate_;
    const HostTimeSynchronizationClock clock_;
    std::atomic<State> state_{State::made};
    std::mutex stoppingSound_;  // held by the one who stops it, so that others wait

    // Set before the start.
    std::optional<Receiver> soundReceiver_;
    std::unique_ptr<PipeWireSystemSound> sound_;
    std::shared_ptr<PictureRelay> relay_;
    std::shared_ptr<SCStream> pictures_;  // null if there are to be none
};

}  // namespace zorvane
