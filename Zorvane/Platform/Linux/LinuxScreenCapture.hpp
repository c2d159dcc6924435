// The screen and the sound of a Linux desktop, which come from different services.
#pragma once

#include <memory>

#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"

namespace zorvane {

class AVAudioConverting;
class ApplicationCatalog;
class PipeWireSession;
class PipeWireSystemSoundPlayers;

/// Pictures and windows by a backend of their own, sound by PipeWire. An application that plays sound is listed also if
/// it owns no window. Without a screen there is no content, though streams of sound alone work.
class LinuxScreenCapture final : public SCScreenCapture {
  public:
    LinuxScreenCapture(std::shared_ptr<SCScreenCapture> screens, std::shared_ptr<PipeWireSession> pipeWire,
                       std::shared_ptr<AVAudioConverting> converting, std::shared_ptr<ApplicationCatalog> catalog);
    ~LinuxScreenCapture() override;

    /// A PipeWire that hangs delays the first answer by two seconds at most.
    void getShareableContent(SCShareableContentScope scope, ContentHandler handler) override;
    std::shared_ptr<SCStream> makeStream(const SCContentFilter& filter, const SCStreamConfiguration& configuration,
                                         std::weak_ptr<SCStreamDelegate> delegate) override;
    /// That of the screens.
    void restartCaptureService(std::function<void(std::exception_ptr error)> handler) override;

  private:
    const std::shared_ptr<SCScreenCapture> screens_;
    const std::shared_ptr<PipeWireSession> pipeWire_;
    const std::shared_ptr<AVAudioConverting> converting_;
    const std::shared_ptr<ApplicationCatalog> catalog_;
    const std::unique_ptr<PipeWireSystemSoundPlayers> players_;
};

}  // namespace zorvane
