#include <chrono>
#include <thread>

#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "tests/Conformance/ScreenCaptureConformance.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/X11TestClient.hpp"

namespace zorvane::test {
namespace {

/// An X server without a window manager, of which the test draws the root window.
class X11Backend final : public ScreenCaptureBackend {
  public:
    SCScreenCapture& screenCapture() override { return *platform_.screenCapture; }
    HostClock& clock() override { return *platform_.clock; }
    SCDisplay display() override {
        const CGDirectDisplayID displayID = platform_.displays->activeDisplayList().front();
        return {.displayID = displayID, .frame = platform_.displays->properties(displayID)->bounds};
    }

    void fill(const CGRect& rect, std::uint32_t rgb) override {
        client_.fill({static_cast<std::int16_t>(rect.origin.x), static_cast<std::int16_t>(rect.origin.y),
                      static_cast<std::uint16_t>(rect.size.width), static_cast<std::uint16_t>(rect.size.height)},
                     rgb);
    }

    bool waitUntil(const std::function<bool()>& condition) override {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            pass(0.005);
        }
        return true;
    }
    void pass(double seconds) override { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

  private:
    PrivateXServer server_{"320x240x24"};
    const Platform platform_ = makeLinuxPlatform();
    X11TestClient client_;
};

std::unique_ptr<ScreenCaptureBackend> makeBackend() {
    return std::make_unique<X11Backend>();
}

INSTANTIATE_TEST_SUITE_P(X11, ScreenCaptureConformance, ::testing::Values(&makeBackend));

}  // namespace
}  // namespace zorvane::test
