#include "Zorvane/Platform/Linux/Phone/PhoneDevices.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <condition_variable>

#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Unit/Platform/Linux/Phone/FakePhoneService.hpp"

namespace zorvane {
namespace {

using ChangeKind = AVCaptureDeviceDiscoverySession::ChangeKind;
using Lines = std::vector<std::string>;

class PhoneDevicesTest : public ::testing::Test {
  protected:
    ~PhoneDevicesTest() override { token.invalidate(); }

    void observe() {
        session = devices->makeDiscoverySession({AVCaptureDeviceType::externalUnknown}, AVMediaType::muxed);
        token = session->observeDevices([this](ChangeKind kind) {
            std::lock_guard lock(mutex);
            kinds.push_back(kind);
            changed.notify_all();
        });
    }

    Lines lines() const {
        static constexpr const char* pairings[] = {"ready", "notPaired", "needsConnect", "needsReconnect"};
        Lines lines;
        for (const auto& device : session->devices()) {
            lines.push_back(fmt::format("{} '{}' {} {}", device->uniqueID(), device->localizedName(), device->modelID(),
                                        pairings[static_cast<int>(device->pairing())]));
        }
        return lines;
    }

    /// Waits until the list is as expected; gives it then, or as it is after ten seconds.
    Lines await(const Lines& expected) {
        std::vector<NSKeyValueObservation> suspensions;
        const auto wake = [this] {
            std::lock_guard lock(mutex);
            changed.notify_all();
        };
        const auto isAsExpected = [&] {
            suspensions.clear();
            for (const auto& device : session->devices()) {
                suspensions.push_back(device->observeSuspended(wake));
            }
            return lines() == expected;
        };
        std::unique_lock lock(mutex);
        changed.wait_for(lock, std::chrono::seconds(10), [&] { return !kinds.empty() && isAsExpected(); });
        return lines();
    }

    TemporaryDirectory directory;
    const std::filesystem::path path = directory.path() / "usbmuxd";
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<ChangeKind> kinds;  // guarded by mutex
    std::unique_ptr<PhoneDevices> devices = std::make_unique<PhoneDevices>(path);
    std::shared_ptr<AVCaptureDeviceDiscoverySession> session;
    NSKeyValueObservation token;
};

TEST_F(PhoneDevicesTest, TheFirstWordComesWithAllPhonesThatAreThere) {
    FakePhoneService service(path);
    service.attach(1, {.udid = "a", .name = "Anna's Phone"});
    service.attach(2, {.udid = "b", .model = "iPad13,1", .hasPairRecord = false});
    observe();
    const Lines expected{"a 'Anna's Phone' iPhone14,2 ready", "b 'A Phone' iPad13,1 notPaired"};
    EXPECT_EQ(await(expected), expected);
    std::lock_guard lock(mutex);
    EXPECT_EQ(kinds, std::vector{ChangeKind::initial});
}

TEST_F(PhoneDevicesTest, PhonesComeAndGo) {
    FakePhoneService service(path);
    observe();
    EXPECT_EQ(await({}), Lines{});
    service.attach(1, {.udid = "a"});
    const Lines attached{"a 'A Phone' iPhone14,2 ready"};
    EXPECT_EQ(await(attached), attached);
    service.detach(1);
    EXPECT_EQ(await({}), Lines{});
}

TEST_F(PhoneDevicesTest, APhoneTellsWhetherItTrustsThisMachine) {
    struct Row {
        FakePhone phone;
        const char* pairing;
    };
    const Row rows[] = {
        {{.hasPairRecord = false}, "notPaired"},
        {{.sessionError = "PairingDialogResponsePending"}, "notPaired"},
        {{.sessionError = "InvalidHostID"}, "notPaired"},
        {{.sessionError = "PasswordProtected"}, "needsReconnect"},
        {{.connection = "Network"}, "needsConnect"},
        {{.connection = "Network", .hasPairRecord = false}, "notPaired"},
        {{}, "ready"},
    };
    FakePhoneService service(path);
    observe();
    int deviceID = 0;
    for (Row row : rows) {
        row.phone.udid = "p";
        service.attach(++deviceID, row.phone);
        const Lines expected{fmt::format("p 'A Phone' iPhone14,2 {}", row.pairing)};
        EXPECT_EQ(await(expected), expected);
        service.detach(deviceID);
        EXPECT_EQ(await({}), Lines{});
    }
}

TEST_F(PhoneDevicesTest, APhoneWhoseUserConfirmsIsReadyAndStaysTheSameDevice) {
    FakePhoneService service(path);
    service.attach(1, {.udid = "a", .hasPairRecord = false});
    observe();
    const Lines before{"a 'A Phone' iPhone14,2 notPaired"};
    EXPECT_EQ(await(before), before);
    const auto device = session->devices().at(0);
    service.pair(1, {.udid = "a"});
    const Lines after{"a 'A Phone' iPhone14,2 ready"};
    EXPECT_EQ(await(after), after);
    EXPECT_EQ(session->devices().at(0), device);
}

TEST_F(PhoneDevicesTest, APhoneOnCableAndNetworkIsOneDevice) {
    FakePhoneService service(path);
    service.attach(1, {.udid = "a", .connection = "Network"});
    service.attach(2, {.udid = "a"});
    observe();
    const Lines both{"a 'A Phone' iPhone14,2 ready"};
    EXPECT_EQ(await(both), both);
    service.detach(2);
    const Lines network{"a 'A Phone' iPhone14,2 needsConnect"};
    EXPECT_EQ(await(network), network);
}

TEST_F(PhoneDevicesTest, WithoutAServiceThereAreNoPhonesUntilItComesAndAgainWhenItHasGone) {
    observe();
    EXPECT_EQ(await({}), Lines{});
    const Lines there{"a 'A Phone' iPhone14,2 ready"};
    for (int round = 0; round < 2; ++round) {
        FakePhoneService service(path);
        service.attach(1, {.udid = "a"});
        EXPECT_EQ(await(there), there);
    }
    EXPECT_EQ(await({}), Lines{});
}

TEST_F(PhoneDevicesTest, APhoneThatHangsHoldsUpNothing) {
    FakePhoneService service(path);
    service.attach(1, {.udid = "hanging", .hangs = true});
    service.attach(2, {.udid = "a"});
    const auto before = std::chrono::steady_clock::now();
    observe();
    const Lines expected{"a 'A Phone' iPhone14,2 ready", "hanging 'iPhone'  needsReconnect"};
    EXPECT_EQ(await(expected), expected);
    devices.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(4)) << "below a phone's time-out";
}

}  // namespace
}  // namespace zorvane
