// A scripted desktop on simulated time, with media written to memory.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/Platform/Virtual/ManualClock.hpp"
#include "Zorvane/Platform/Virtual/VirtualAssetWriter.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"
#include "Zorvane/Platform/Virtual/VirtualMediaWriting.hpp"
#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"
#include "Zorvane/Platform/Virtual/VirtualPlatform.hpp"

namespace zorvane::testing {

/// Installs the desktop for the length of a test.
class VirtualWorldTest : public ::testing::Test {
  protected:
    VirtualWorldTest() { Platform::install(makeVirtualPlatform(desktop, writing)); }
    ~VirtualWorldTest() override { Platform::install(Platform()); }

    /// Seconds on the host clock, since the desktop was made.
    double secondsNow() const { return std::chrono::duration<double>(clock->now() - desktop->origin()).count(); }
    /// The same, as the pipeline tells them.
    double hostSeconds(double sinceOrigin) const {
        return std::chrono::duration<double>(desktop->origin()).count() + sinceOrigin;
    }
    void advance(double seconds) {
        clock->advance(std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds)));
    }

    const std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    // Small, so that painting it costs little.
    const std::shared_ptr<VirtualDesktop> desktop = VirtualDesktop::make(
        clock, {VirtualDisplay{.displayID = 1, .serialNumber = 77, .frame = CGRect::make(0, 0, 320, 200)}});
    const std::shared_ptr<VirtualMediaWriting> writing = VirtualMediaWriting::make(clock);
};

}  // namespace zorvane::testing
