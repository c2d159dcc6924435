// A PipeWire that comes, goes, hangs and comes back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <future>
#include <thread>

#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevices.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceList.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSocket.hpp"
#include "tests/Desktop/PipeWire/DeviceWatcher.hpp"
#include "tests/Support/PipeWireTestClient.hpp"
#include "tests/Support/PrivatePipeWire.hpp"

namespace zorvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<PipeWireCaptureDevices> makeDevices() {
    return std::make_shared<PipeWireCaptureDevices>(std::make_shared<PipeWireSession>(),
                                                    std::make_shared<FFmpegAudioConverting>(), nullptr);
}

TEST(PipeWireServiceTest, WithoutPipeWireThereAreNoDevices) {
    const PrivatePipeWire service;
    const auto devices = makeDevices();
    const DeviceWatcher microphones(*devices, AVMediaType::audio);
    EXPECT_THAT(microphones.ids(), IsEmpty());
    EXPECT_EQ(devices->defaultDeviceID(AVMediaType::audio), "");
    EXPECT_EQ(microphones.initialSignals(), 1);
}

TEST(PipeWireServiceTest, DevicesOfAServiceThatStartsLaterAppear) {
    PrivatePipeWire service;
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    EXPECT_THAT(microphones.ids(), IsEmpty());

    service.startAndWait();
    PipeWireTestClient client;
    client.addNode({{"node.name", "mic"}});
    EXPECT_TRUE(microphones.waitUntilListed("mic"));
}

TEST(PipeWireServiceTest, DevicesOutliveARestartOfTheService) {
    PrivatePipeWire service;
    service.startAndWait();
    auto client = std::make_unique<PipeWireTestClient>();
    client->addNode({{"node.name", "mic"}});
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    microphones.waitUntilListed("mic");
    const auto device = microphones.find("mic");
    ASSERT_TRUE(device);

    for (const auto end : {&PrivatePipeWire::kill, &PrivatePipeWire::stop, &PrivatePipeWire::kill}) {
        client.reset();
        (service.*end)();
        EXPECT_TRUE(microphones.waitUntilGone("mic"));
        EXPECT_FALSE(device->isConnected());

        service.startAndWait();
        client = std::make_unique<PipeWireTestClient>();
        client->addNode({{"node.name", "mic"}});
        EXPECT_TRUE(microphones.waitUntilListed("mic"));
        EXPECT_EQ(microphones.find("mic"), device);
        EXPECT_TRUE(device->isConnected());
    }
}

TEST(PipeWireServiceTest, AServiceIsFoundThoughItsFolderComesLater) {
    PrivatePipeWire service;
    const auto folder = service.runtimeDirectory();
    const auto elsewhere = folder.parent_path() / "elsewhere";
    std::filesystem::remove(folder);
    setenv("PIPEWIRE_RUNTIME_DIR", (folder / "deep" / "down").c_str(), 1);
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    EXPECT_THAT(microphones.ids(), IsEmpty());

    std::filesystem::create_directories(elsewhere / "down");
    std::filesystem::create_directory(folder);
    std::filesystem::rename(elsewhere, folder / "deep");
    service.start();
    EXPECT_EQ(pipeWireSocketPath(), folder / "deep" / "down" / "pipewire-0");
    while (!connectToPipeWire(pipeWireSocketPath()).socket) {
        std::this_thread::yield();
    }
    PipeWireTestClient client;
    client.addNode({{"node.name", "mic"}});
    EXPECT_TRUE(microphones.waitUntilListed("mic"));
}

TEST(PipeWireServiceTest, AServiceThatHangsIsWaitedForOnce) {
    PrivatePipeWire service;
    service.startAndWait();
    PipeWireTestClient client;
    client.addNode({{"node.name", "mic"}});
    service.suspend();
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    EXPECT_THAT(microphones.ids(), IsEmpty());

    service.resume();
    EXPECT_TRUE(microphones.waitUntilListed("mic"));
    service.suspend();  // an end doesn't wait for it either
}

TEST(PipeWireServiceTest, WaitingCostsNothing) {
    const auto spent = [] {
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_nvcsw + usage.ru_nivcsw;
    };
    PrivatePipeWire service;
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    EXPECT_THAT(microphones.ids(), IsEmpty());
    service.startAndWait();
    PipeWireTestClient client;
    client.addNode({{"node.name", "mic"}});
    microphones.waitUntilListed("mic");
    service.kill();
    microphones.waitUntilGone("mic");

    const long before = spent();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    EXPECT_LT(spent() - before, 40) << "a few tries to reconnect, then only the change of the folder wakes";
}

TEST(PipeWireServiceTest, AnEndInTheMiddleOfAnythingIsClean) {
    PrivatePipeWire service;
    for (int round = 0; round < 20; ++round) {
        service.startAndWait();
        PipeWireTestClient client;
        auto devices = makeDevices();
        const auto session = devices->makeDiscoverySession({AVCaptureDeviceType::external}, AVMediaType::audio);
        const auto token = session->observeDevices([](auto) {});
        client.addNode({{"node.name", "mic"}});
        if (round % 2 == 0) {
            devices.reset();
            service.kill();
        } else {
            service.kill();
            session->devices();
        }
    }
}

TEST(PipeWireServiceTest, AnObserverMayLetGoOfTheLastOneThatHoldsIt) {
    PrivatePipeWire service;
    service.startAndWait();
    PipeWireTestClient client;
    std::promise<void> done;
    auto devices = makeDevices();
    auto session = devices->makeDiscoverySession({AVCaptureDeviceType::external}, AVMediaType::audio);
    EXPECT_THAT(session->devices(), IsEmpty());
    devices.reset();
    const auto token = session->observeDevices([&](auto kind) {
        if (kind == AVCaptureDeviceDiscoverySession::ChangeKind::setting) {
            session.reset();
            done.set_value();
        }
    });
    client.addNode({{"node.name", "mic"}});
    EXPECT_EQ(done.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

TEST(PipeWireStatusTest, SaysWhyItCannotBeReached) {
    using enum PipeWireStatus::Reachability;
    PrivatePipeWire service;
    EXPECT_EQ(pipeWireStatus(), (PipeWireStatus{notRunning, service.socket()}));
    service.startAndWait();
    EXPECT_EQ(pipeWireStatus(), (PipeWireStatus{reachable, service.socket()}));
    service.kill();
    EXPECT_TRUE(std::filesystem::exists(service.socket()));
    EXPECT_EQ(pipeWireStatus().reachability, notRunning);
    setenv("PIPEWIRE_REMOTE", std::string(200, 'x').c_str(), 1);
    EXPECT_EQ(pipeWireStatus().reachability, notRunning) << "no socket has so long a name";
}

TEST(PipeWireStatusTest, FollowsTheEnvironment) {
    const PrivatePipeWire service;
    setenv("PIPEWIRE_REMOTE", "other", 1);
    EXPECT_EQ(pipeWireSocketPath(), service.runtimeDirectory() / "other");
    setenv("PIPEWIRE_RUNTIME_DIR", "/run/elsewhere", 1);
    EXPECT_EQ(pipeWireSocketPath(), "/run/elsewhere/other");
    setenv("PIPEWIRE_REMOTE", "/tmp/socket", 1);
    EXPECT_EQ(pipeWireSocketPath(), "/tmp/socket");
    setenv("PIPEWIRE_REMOTE", "", 1);
    setenv("PIPEWIRE_RUNTIME_DIR", "", 1);
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(pipeWireSocketPath(), "/run/pipewire/pipewire-0");
}

}  // namespace
}  // namespace zorvane
