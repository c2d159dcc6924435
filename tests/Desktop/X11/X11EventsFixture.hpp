// Listening to a private X server's mouse and keyboard.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <vector>

#include "Zorvane/Platform/AppKit/NSEvents.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/X11TestUser.hpp"

namespace zorvane {

inline constexpr CGEventMask allEvents = ~CGEventMask{0};

/// What a listener heard.
class HeardEvents {
  public:
    CGEventHandler handler() {
        return [this](const CGEvent& event) {
            const std::lock_guard lock(mutex_);
            events_.push_back(event);
        };
    }
    std::vector<CGEvent> all() {
        const std::lock_guard lock(mutex_);
        return events_;
    }

  private:
    std::mutex mutex_;
    std::vector<CGEvent> events_;  // guarded by mutex_
};

class X11EventsTest : public testing::Test {
  protected:
    std::unique_ptr<CGEventListener> listen(CGEventMask mask = allEvents) {
        return platform_.events->tapCreate(mask, heard_.handler());
    }

    PrivateXServer server_;
    HeardEvents heard_;  // outlives every listener
    Platform platform_ = makeLinuxPlatform();
};

}  // namespace zorvane
