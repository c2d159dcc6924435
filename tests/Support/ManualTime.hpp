// A test whose world runs on simulated time.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/Platform/Virtual/ManualClock.hpp"

namespace zorvane::testing {

/// Installs a platform on a manual clock for the length of a test.
class ManualTimeTest : public ::testing::Test {
  protected:
    ManualTimeTest() {
        Platform platform;
        platform.clock = clock;
        Platform::install(std::move(platform));
    }
    ~ManualTimeTest() override { Platform::install(Platform()); }

    const std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
};

}  // namespace zorvane::testing
