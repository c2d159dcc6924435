// A stream of one display of an X server.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenCaptureLoop.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {

class XConnection;

/// `SCStream` on DAMAGE and MIT-SHM, with a thread and a connection of its own from `startCapture` on.
///
/// Pictures have the size of the captured area in whole pixels, which is what `ScreenRecorder` asks for; another
/// `width` and `height` are left to the writer. What the area holds beyond the display's edge is black. The
/// first picture is read at once; then one is read when the screen changes, no more often than the minimum frame
/// interval, and one `idle` notice is given when nothing has changed for 100 ms. Until the next change the stream
/// uses no processor time. While all pictures are out nothing is read; the newest state follows when one comes back.
///
/// There is no audio.
///
///     made --startCapture--> running --stopCapture--> ended
///                               `--------error--------^  (told to the start's completion, later to the delegate)
///
/// Not to be destroyed inside a sample handler of its own.
class X11Stream final : public SCStream, private ScreenCaptureLoop::Sink {
  public:
    X11Stream(SCContentFilter filter, SCStreamConfiguration configuration, std::weak_ptr<SCStreamDelegate> delegate);
    ~X11Stream() override;

    void addStreamOutput(std::weak_ptr<SCStreamOutput> output, SCStreamOutputType type,
                         DispatchQueue sampleHandlerQueue) override;
    void startCapture(Completion completion) override;
    void stopCapture(Completion completion) override;
    const CMClock* synchronizationClock() const override { return &clock_; }

  private:
    enum class State { made, running, ended };

    void capture(Completion started);
    void runLoop(Completion& started);
    void publish(std::shared_ptr<XConnection> connection);
    bool endRunning();
    void joinThread();

    void screenChanged(const CVPixelBufferRef& picture, std::chrono::nanoseconds time) override;
    void screenFellStill(std::chrono::nanoseconds time) override;
    void deliver(const CMSampleBuffer& sample);

    const SCContentFilter filter_;
    const SCStreamConfiguration configuration_;
    const std::weak_ptr<SCStreamDelegate> delegate_;
    const HostTimeSynchronizationClock clock_;
    std::weak_ptr<SCStreamOutput> output_;  // set before the thread begins
    std::optional<DispatchQueue> queue_;

    std::mutex mutex_;  // guards the two below
    State state_ = State::made;
    std::shared_ptr<XConnection> connection_;  // the thread's, so that it can be hung up
    std::thread thread_;
};

}  // namespace zorvane
