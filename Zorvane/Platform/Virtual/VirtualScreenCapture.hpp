// The screen capture service of a virtual desktop.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

/// Counts the requests, and answers each as the script says. Handlers run on the desktop's thread. A restart changes
/// nothing by itself: the script says how later requests are answered.
class VirtualScreenCapture final : public SCScreenCapture {
  public:
    explicit VirtualScreenCapture(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    void getShareableContent(SCShareableContentScope scope, ContentHandler handler) override;
    std::shared_ptr<SCStream> makeStream(const SCContentFilter& filter, const SCStreamConfiguration& configuration,
                                         std::weak_ptr<SCStreamDelegate> delegate) override;
    void restartCaptureService(std::function<void(std::exception_ptr error)> handler) override;

  private:
    const std::shared_ptr<VirtualDesktop> desktop_;
};

}  // namespace zorvane
