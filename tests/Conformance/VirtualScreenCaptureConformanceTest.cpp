#include <chrono>
#include <thread>

#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "tests/Conformance/VirtualBackend.hpp"

namespace zorvane::test {
namespace {

class RealTimeBackend final : public VirtualBackend {
  public:
    RealTimeBackend() : VirtualBackend(MonotonicClock::shared()) {}
    void pass(double seconds) override { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }
};

std::unique_ptr<ScreenCaptureBackend> makeBackend() {
    return std::make_unique<RealTimeBackend>();
}

INSTANTIATE_TEST_SUITE_P(VirtualInRealTime, ScreenCaptureConformance, ::testing::Values(&makeBackend));

}  // namespace
}  // namespace zorvane::test
