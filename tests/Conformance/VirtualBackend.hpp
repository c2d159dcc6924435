// The virtual desktop as a backend of the suites.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"
#include "Zorvane/Platform/Virtual/VirtualPlatform.hpp"
#include "tests/Conformance/ScreenCaptureConformance.hpp"

namespace zorvane::test {

/// The virtual desktop; how time goes by is left to the clock's kind.
class VirtualBackend : public ScreenCaptureBackend {
  public:
    explicit VirtualBackend(std::shared_ptr<HostClock> clock)
        : desktop_(VirtualDesktop::make(std::move(clock), {{.frame = CGRect::make(0, 0, 320, 240)}})),
          platform_(makeVirtualPlatform(desktop_)) {}

    SCScreenCapture& screenCapture() override { return *platform_.screenCapture; }
    HostClock& clock() override { return *platform_.clock; }
    SCDisplay display() override { return {.displayID = 1, .frame = CGRect::make(0, 0, 320, 240)}; }

    void fill(const CGRect& rect, std::uint32_t rgb) override {
        const VirtualPixelRect pixels{
            static_cast<std::int32_t>(rect.origin.x), static_cast<std::int32_t>(rect.origin.y),
            static_cast<std::int32_t>(rect.size.width), static_cast<std::int32_t>(rect.size.height)};
        desktop_->now().paint(1, pixels, {(rgb >> 16 & 0xFF) / 255.0, (rgb >> 8 & 0xFF) / 255.0, (rgb & 0xFF) / 255.0});
    }

    bool waitUntil(const std::function<bool()>& condition) override {
        for (double waited = 0; waited < patience; waited += step) {
            if (condition()) {
                return true;
            }
            pass(step);
        }
        return condition();
    }

  private:
    static constexpr double step = 0.005;   // seconds
    static constexpr double patience = 10;  // seconds

    const std::shared_ptr<VirtualDesktop> desktop_;
    const Platform platform_;
};

}  // namespace zorvane::test
