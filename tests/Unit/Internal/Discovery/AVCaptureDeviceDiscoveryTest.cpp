#include "Zorvane/Internal/Discovery/AVCaptureDeviceDiscovery.hpp"

#include <atomic>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevice.hpp"
#include "tests/Unit/Internal/Discovery/DeviceWorld.hpp"

namespace zorvane {
namespace {

using ChangeKind = AVCaptureDeviceDiscoverySession::ChangeKind;

/// Says what it is told to.
class ScriptedSession final : public AVCaptureDeviceDiscoverySession {
  public:
    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override { return listed; }
    NSKeyValueObservation observeDevices(std::function<void(ChangeKind)> handler) override {
        return observers.add(std::move(handler));
    }

    std::vector<std::shared_ptr<AVCaptureDevice>> listed;
    NSKeyValueObservers<ChangeKind> observers;
};

class AVCaptureDeviceDiscoveryTest : public testing::DeviceWorldTest {
  protected:
    AVCaptureDeviceDiscoveryTest() { spawn(count(discovery->updates(), signals, hasEnded)); }
    ~AVCaptureDeviceDiscoveryTest() override {
        discovery.reset();
        Activity::waitUntilIdle();
    }

    /// Whether a signal has come since the last call.
    bool signalled() {
        Activity::waitUntilIdle();
        return signals.exchange(0) > 0;
    }

    const std::shared_ptr<ScriptedSession> session = std::make_shared<ScriptedSession>();
    const std::shared_ptr<VirtualCaptureDevice> device =
        std::make_shared<VirtualCaptureDevice>(VirtualDevice::camera("cam", "Camera"));
    std::optional<AVCaptureDeviceDiscovery> discovery{
        std::in_place, "CameraDiscovery", AVCaptureDeviceDiscovery::Sessions{session}, Executor::makeStrand("test")};
    std::atomic<int> signals = 0;
    std::atomic<bool> hasEnded = false;

  private:
    static Task<> count(AsyncStream<AVCaptureDeviceDiscovery::Signal> updates, std::atomic<int>& signals,
                        std::atomic<bool>& hasEnded) {
        while (const auto signal = co_await updates.next()) {
            ++signals;
        }
        hasEnded = true;
    }
};

TEST_F(AVCaptureDeviceDiscoveryTest, SignalsChangesOfTheListAndOfTheDevicesOnIt) {
    EXPECT_FALSE(signalled());
    device->setSuspended(true);
    EXPECT_FALSE(signalled()) << "it isn't listed";
    session->listed = {device};
    session->observers.notify(ChangeKind::setting);
    EXPECT_TRUE(signalled());
    device->setSuspended(false);
    EXPECT_TRUE(signalled());
    device->setPairing(AVCaptureDevicePairing::notPaired);
    EXPECT_TRUE(signalled());
    session->listed.clear();
    session->observers.notify(ChangeKind::setting);
    EXPECT_TRUE(signalled());
    device->setSuspended(true);
    EXPECT_FALSE(signalled()) << "it isn't listed any more";
}

TEST_F(AVCaptureDeviceDiscoveryTest, WarnsOfAChangeOfAnUnknownKind) {
    session->observers.notify(static_cast<ChangeKind>(9));
    EXPECT_FALSE(signalled());
    EXPECT_TRUE(log.has(ZVLogLevel::warning,
                        "Unexpected change kind DiscoverySession.devices. Might result in incorrect device list."));
    EXPECT_EQ(log.messages().back().category, "CameraDiscovery.AVCaptureDevice.Discovery");
}

TEST_F(AVCaptureDeviceDiscoveryTest, EndsItsStreamAndItsObservationsWithItself) {
    session->listed = {device};
    session->observers.notify(ChangeKind::setting);
    EXPECT_TRUE(signalled());
    discovery.reset();
    Activity::waitUntilIdle();
    session->observers.notify(ChangeKind::setting);
    device->setSuspended(true);
    EXPECT_FALSE(signalled());
    EXPECT_TRUE(hasEnded) << "the stream";
}

}  // namespace
}  // namespace zorvane
