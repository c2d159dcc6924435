// What every screen capture backend is tested for. A backend lends its desktop to the suite:
//
//     INSTANTIATE_TEST_SUITE_P(Virtual, ScreenCaptureConformance, ::testing::Values(&makeVirtualBackend));
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "Zorvane/Platform/Foundation/HostClock.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"

namespace zorvane::test {

/// One desktop with one display, which nobody but the test draws on, and on which the pointer doesn't show.
class ScreenCaptureBackend {
  public:
    virtual ~ScreenCaptureBackend() = default;

    virtual SCScreenCapture& screenCapture() = 0;
    virtual HostClock& clock() = 0;
    /// As `getShareableContent` lists it.
    virtual SCDisplay display() = 0;
    /// Fills a rectangle, in points of the display, with an sRGB colour: 0xRRGGBB. Returns when it is on the screen.
    virtual void fill(const CGRect& rect, std::uint32_t rgb) = 0;

    /// Lets time go by until `condition` holds; false when it doesn't within ten seconds.
    virtual bool waitUntil(const std::function<bool()>& condition) = 0;
    /// Lets this much time go by.
    virtual void pass(double seconds) = 0;
};

using MakeScreenCaptureBackend = std::unique_ptr<ScreenCaptureBackend> (*)();

class ScreenCaptureConformance : public ::testing::TestWithParam<MakeScreenCaptureBackend> {
  protected:
    const std::unique_ptr<ScreenCaptureBackend> backend_ = GetParam()();
};

}  // namespace zorvane::test
