#include "Zorvane/Platform/Linux/Phone/PhoneDevices.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>
#include <mutex>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Unit/Platform/Linux/Phone/FakePhoneService.hpp"

namespace zorvane {
namespace {

using ChangeKind = AVCaptureDeviceDiscoverySession::ChangeKind;
using Lines = std::vector<std::string>;

/// One path for the whole program, since threads that are left behind may read the environment at any time.
const std::filesystem::path& servicePath() {
    static const TemporaryDirectory directory;
    static const std::filesystem::path path = directory.path() / "usbmuxd";
    static const int isSet = ::setenv("USBMUXD_SOCKET_ADDRESS", ("UNIX:" + path.string()).c_str(), 1);
    EXPECT_EQ(isSet, 0);
    return path;
}

class PhoneDevicesTest : public ::testing::Test {
  protected:
    void observe() {
        session = devices->makeDiscoverySession({AVCaptureDeviceType::externalUnknown}, AVMediaType::muxed);
        token = session->observeDevices([heard = heard](ChangeKind kind) {
            std::lock_guard lock(heard->mutex);
            heard->kinds.push_back(kind);
            heard->changed.notify_all();
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
        const auto isAsExpected = [&] {
            suspensions.clear();
            for (const auto& device : session->devices()) {
                suspensions.push_back(device->observeSuspended([heard = heard] {
                    std::lock_guard lock(heard->mutex);
                    heard->changed.notify_all();
                }));
            }
            return lines() == expected;
        };
        std::unique_lock lock(heard->mutex);
        heard->changed.wait_for(lock, std::chrono::seconds(10),
                                [&] { return !heard->kinds.empty() && isAsExpected(); });
        return lines();
    }

    /// What handlers say; they may still be running when a test has ended.
    struct Heard {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<ChangeKind> kinds;  // guarded by mutex
    };

    const std::filesystem::path path = servicePath();
    const std::shared_ptr<Heard> heard = std::make_shared<Heard>();
    std::unique_ptr<PhoneDevices> devices = std::make_unique<PhoneDevices>();
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
    std::lock_guard lock(heard->mutex);
    EXPECT_EQ(heard->kinds, std::vector{ChangeKind::initial});
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
        {{.manner = FakePhone::Manner::encrypts}, "needsReconnect"},
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
    EXPECT_EQ(service.questions(), (std::set<std::string>{"GetValue", "StartSession", "StopSession"}))
        << "asks no user for trust";
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
    service.attach(3, {.udid = "b", .connection = "Network", .hasPairRecord = false});
    observe();
    const Lines both{"a 'A Phone' iPhone14,2 ready", "b 'iPhone'  notPaired"};
    EXPECT_EQ(await(both), both);
    service.detach(2);
    const Lines network{"a 'iPhone'  needsConnect", "b 'iPhone'  notPaired"};
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

TEST_F(PhoneDevicesTest, APhoneThatIsOpenedSaysHowItCanBeCaptured) {
    FakePhoneService service(path);
    service.attach(1, {.udid = "a"});
    observe();
    EXPECT_EQ(await({"a 'A Phone' iPhone14,2 ready"}).size(), 1u);
    try {
        devices->makeDeviceInput(session->devices().at(0));
        ADD_FAILURE() << "it was opened";
    } catch (const NSError& error) {
        EXPECT_EQ(error.localizedDescription(),
                  "The screen of “A Phone” can't be captured over its cable here. Connect it to a capture card with an "
                  "HDMI adapter, and record the capture card, which is listed as a device.");
    }
}

TEST_F(PhoneDevicesTest, APhoneThatHangsHoldsUpNothing) {
    FakePhoneService service(path);
    service.attach(1, {.udid = "hanging", .manner = FakePhone::Manner::hangs});
    service.attach(2, {.udid = "a"});
    const auto before = std::chrono::steady_clock::now();
    observe();
    const Lines expected{"a 'A Phone' iPhone14,2 ready", "hanging 'iPhone'  needsReconnect"};
    EXPECT_EQ(await(expected), expected);
    devices.reset();
    EXPECT_EQ(await({}), Lines{});
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(4)) << "below a phone's time-out";
}

TEST_F(PhoneDevicesTest, TheNextOnesFindThePhonesAgain) {
    FakePhoneService service(path);
    service.attach(1, {.udid = "a"});
    const Lines there{"a 'A Phone' iPhone14,2 ready"};
    for (int round = 0; round < 3; ++round) {
        devices = std::make_unique<PhoneDevices>();
        observe();
        EXPECT_EQ(await(there), there);
    }
}

}  // namespace
}  // namespace zorvane
