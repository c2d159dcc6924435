#include <chrono>
#include <cmath>

#include "Zorvane/Platform/Virtual/ManualClock.hpp"
#include "tests/Conformance/VirtualBackend.hpp"

namespace zorvane::test {
namespace {

class SimulatedTimeBackend final : public VirtualBackend {
  public:
    explicit SimulatedTimeBackend(std::shared_ptr<ManualClock> clock) : VirtualBackend(clock), clock_(clock) {}
    void pass(double seconds) override { clock_->advance(std::chrono::nanoseconds(std::llround(seconds * 1e9))); }

  private:
    const std::shared_ptr<ManualClock> clock_;
};

std::unique_ptr<ScreenCaptureBackend> makeBackend() {
    return std::make_unique<SimulatedTimeBackend>(std::make_shared<ManualClock>());
}

INSTANTIATE_TEST_SUITE_P(VirtualInSimulatedTime, ScreenCaptureConformance, ::testing::Values(&makeBackend));

}  // namespace
}  // namespace zorvane::test
