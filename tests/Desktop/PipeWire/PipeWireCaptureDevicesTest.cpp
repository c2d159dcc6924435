// Microphones and cameras of a PipeWire that is there.
#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevices.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
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

class PipeWireCaptureDevicesTest : public testing::Test {
  protected:
    PipeWireCaptureDevicesTest() { service.startAndWait(); }

    PrivatePipeWire service;
};

TEST(PipeWireDesktopTest, ListsTheDesktopsMicrophoneAndCameraButNotItsSpeakers) {
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    DeviceWatcher cameras(*devices, AVMediaType::video);
    const DeviceWatcher phones(*devices, AVMediaType::muxed);

    EXPECT_TRUE(microphones.waitUntilListed("zorvane-test-microphone"));
    EXPECT_THAT(microphones.ids(), ElementsAre("zorvane-test-microphone"));
    ASSERT_THAT(cameras.ids(), ElementsAre("zorvane-test-camera"));
    EXPECT_THAT(phones.ids(), IsEmpty());
    const auto camera = cameras.devices().front();
    EXPECT_EQ(camera->localizedName(), "Test Camera");
    EXPECT_EQ(camera->deviceType(), AVCaptureDeviceType::external);
    EXPECT_EQ(camera->transportType(), AVCaptureDeviceTransportType::virtualDevice);
    EXPECT_TRUE(camera->isConnected());
    EXPECT_FALSE(camera->isSuspended()) << "a node that sleeps because nobody uses it is not suspended";
    EXPECT_EQ(devices->defaultDeviceID(AVMediaType::audio), "zorvane-test-microphone");
}

TEST_F(PipeWireCaptureDevicesTest, ADeviceAppearsAndGoes) {
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    EXPECT_EQ(microphones.initialSignals(), 1);
    EXPECT_THAT(microphones.ids(), IsEmpty());

    PipeWireTestClient client;
    const auto node = client.addNode({{"node.name", "desk-mic"}, {"node.description", "Desk Microphone"}});
    EXPECT_TRUE(microphones.waitUntilListed("desk-mic"));
    const auto device = microphones.find("desk-mic");
    ASSERT_TRUE(device);
    EXPECT_TRUE(device->isConnected());

    client.removeNode(node);
    EXPECT_TRUE(microphones.waitUntilGone("desk-mic"));
    EXPECT_FALSE(device->isConnected());
}

TEST_F(PipeWireCaptureDevicesTest, OnlyNodesThatGiveSoundOrPicturesAreDevices) {
    PipeWireTestClient client;
    client.addNode({{"node.name", "speakers"}, {"media.class", "Audio/Sink"}});
    client.addNode({{"node.name", "effects"}, {"media.class", "Audio/Source/Virtual"}});
    client.addNode({{"node.name", "box"}, {"media.class", "Audio/Duplex"}});
    client.addNode({{"node.name", "player"}, {"media.class", "Stream/Output/Audio"}});
    client.addNode({{"node.name", "screen"}, {"media.class", "Video/Source"}});

    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    microphones.waitUntilListed("box");
    EXPECT_THAT(microphones.ids(), ElementsAre("effects", "box"));
    EXPECT_THAT(DeviceWatcher(*devices, AVMediaType::video).ids(), ElementsAre("screen"));
}

TEST_F(PipeWireCaptureDevicesTest, ASessionListsTheTypesItWasAskedFor) {
    PipeWireTestClient client;
    client.addNode({{"node.name", "inside"}, {"device.api", "alsa"}, {"device.bus", "pci"}});
    client.addNode({{"node.name", "outside"}, {"device.api", "alsa"}, {"device.bus", "usb"}});
    const auto devices = makeDevices();
    DeviceWatcher(*devices, AVMediaType::audio).waitUntilListed("outside");
    const auto builtIn = devices->makeDiscoverySession({AVCaptureDeviceType::builtInMicrophone}, AVMediaType::audio);
    ASSERT_EQ(builtIn->devices().size(), 1u);
    EXPECT_EQ(builtIn->devices().front()->uniqueID(), "inside");
    EXPECT_THAT(devices->makeDiscoverySession({AVCaptureDeviceType::deskViewCamera}, AVMediaType::video)->devices(),
                IsEmpty());
}

TEST_F(PipeWireCaptureDevicesTest, TextFromOutsideBecomesValid) {
    PipeWireTestClient client;
    client.addNode({{"node.name", "bad\xFFname"}, {"node.description", " Mic\x1b[31m\xC3\n"}});
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    microphones.waitUntilListed("bad\uFFFDname");
    ASSERT_THAT(microphones.ids(), ElementsAre("bad\uFFFDname"));
    EXPECT_EQ(microphones.devices().front()->localizedName(), "Mic [31m\uFFFD");
}

TEST_F(PipeWireCaptureDevicesTest, NodesWithOneNameKeepTheIDsTheyGot) {
    PipeWireTestClient client;
    const auto first = client.addNode({{"node.name", "twin"}});
    client.addNode({{"node.name", "twin"}, {"device.serial", "B7"}});
    client.addNode({{"node.name", "twin"}, {"device.serial", "B7"}});
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    microphones.waitUntilListed("twin#B7#2");
    ASSERT_THAT(microphones.ids(), ElementsAre("twin", "twin#B7", "twin#B7#2"));
    const auto second = microphones.find("twin#B7");

    client.removeNode(first);
    microphones.waitUntilGone("twin");
    EXPECT_THAT(microphones.ids(), ElementsAre("twin#B7", "twin#B7#2"));
    EXPECT_EQ(microphones.find("twin#B7"), second);

    client.addNode({{"node.name", "twin"}});
    EXPECT_TRUE(microphones.waitUntilListed("twin"));
}

TEST_F(PipeWireCaptureDevicesTest, ADeviceThatComesBackIsTheSameObjectWhileItIsHeld) {
    PipeWireTestClient client;
    auto node = client.addNode({{"node.name", "mic"}, {"node.description", "Old Name"}});
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    microphones.waitUntilListed("mic");
    const auto device = microphones.find("mic");
    ASSERT_TRUE(device);

    client.removeNode(node);
    microphones.waitUntilGone("mic");
    node = client.addNode({{"node.name", "mic"}, {"node.description", "Old Name"}});
    microphones.waitUntilListed("mic");
    EXPECT_EQ(microphones.find("mic"), device);
    EXPECT_TRUE(device->isConnected());

    client.removeNode(node);
    microphones.waitUntilGone("mic");
    client.addNode({{"node.name", "mic"}, {"node.description", "Another Thing"}});
    microphones.waitUntilListed("mic");
    EXPECT_NE(microphones.find("mic"), device) << "what an object says of itself never changes";
}

TEST_F(PipeWireCaptureDevicesTest, TheDefaultIsTheListedDeviceOfThatName) {
    PipeWireTestClient client;
    client.addNode({{"node.name", "a"}});
    client.addNode({{"node.name", "cam"}, {"media.class", "Video/Source"}});
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    EXPECT_EQ(devices->defaultDeviceID(AVMediaType::audio), "");

    // The list doesn't change with the default, so that a device which comes later tells that the default has.
    const auto setDefault = [&](const std::string& key, const std::string& value) {
        static int marker = 0;
        client.setDefault(key, value);
        const std::string name = "marker" + std::to_string(++marker);
        client.addNode({{"node.name", name}});
        microphones.waitUntilListed(name);
    };
    setDefault("default.audio.source", R"({ "name": "a" })");
    EXPECT_EQ(devices->defaultDeviceID(AVMediaType::audio), "a");
    setDefault("default.audio.source", R"({ name = a, other = "x" })");
    EXPECT_EQ(devices->defaultDeviceID(AVMediaType::audio), "a");
    setDefault("default.video.source", R"({"name":"cam"})");
    EXPECT_EQ(devices->defaultDeviceID(AVMediaType::video), "cam");
    EXPECT_EQ(devices->defaultDeviceID(AVMediaType::muxed), "");
    for (const char* senseless : {"", "{", "[]", "cam", R"({"name":{}})", R"({"name":"cam"})", R"({"name":"gone"})"}) {
        setDefault("default.audio.source", senseless);
        EXPECT_EQ(devices->defaultDeviceID(AVMediaType::audio), "") << senseless;
    }
}

TEST_F(PipeWireCaptureDevicesTest, AnEmptyJackSuspendsItsMicrophoneOnly) {
    using enum PipeWireRoute::Direction;
    using enum PipeWireRoute::Availability;
    const auto withJack = [](PipeWireRoute::Availability jack) {
        const PipeWireRoute internal{input, yes, {1}};
        const PipeWireRoute headset{input, jack, {2}};
        const PipeWireRoute speakers{output, no, {1, 2}};
        return PipeWireRoutes{.active = {internal, headset}, .possible = {speakers, internal, headset}};
    };
    PipeWireTestClient client;
    const auto card =
        client.addCard({{"device.description", "Card"}, {"device.vendor.name", "Vendor"}, {"device.product.id", "0x1"}},
                       withJack(yes));
    const auto onCard = [&](const char* name, const char* number) {
        client.addNode({{"node.name", name}, {"device.id", std::to_string(card)}, {"card.profile.device", number}});
    };
    onCard("internal", "1");
    onCard("headset", "2");
    onCard("no number", "x");
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    microphones.waitUntilListed("no number");
    const auto internal = microphones.find("internal");
    const auto headset = microphones.find("headset");
    ASSERT_TRUE(internal && headset);
    EXPECT_EQ(headset->manufacturer(), "Vendor");
    EXPECT_EQ(headset->modelID(), "0x1");
    EXPECT_EQ(headset->localizedName(), "Card");
    EXPECT_FALSE(headset->isSuspended());

    microphones.observe(*headset);
    client.setRoutes(card, withJack(no));
    EXPECT_TRUE(microphones.waitUntil([&] { return headset->isSuspended(); }));
    EXPECT_TRUE(headset->isConnected());
    EXPECT_FALSE(internal->isSuspended());
    EXPECT_FALSE(microphones.find("no number")->isSuspended());

    client.setRoutes(card, withJack(unknown));
    EXPECT_TRUE(microphones.waitUntil([&] { return !headset->isSuspended(); }));
    EXPECT_EQ(microphones.suspendedSignals(), 2) << "one for each change of the jack";
}

TEST_F(PipeWireCaptureDevicesTest, ACrowdOfDevicesIsListedInItsOrder) {
    constexpr int crowd = 120;
    const auto devices = makeDevices();
    DeviceWatcher microphones(*devices, AVMediaType::audio);
    std::vector<std::string> names;
    auto client = std::make_unique<PipeWireTestClient>();
    for (int number = 0; number < crowd; ++number) {
        names.push_back("crowd-" + std::to_string(number));
        client->addNode({{"node.name", names.back()}});
    }
    EXPECT_TRUE(microphones.waitUntilListed(names.back()));
    EXPECT_EQ(microphones.ids(), names);
    const auto laterDevices = makeDevices();
    DeviceWatcher later(*laterDevices, AVMediaType::audio);
    later.waitUntilListed(names.back());
    EXPECT_EQ(later.ids(), names) << "to one who comes later";

    client.reset();  // they all go at once
    EXPECT_TRUE(microphones.waitUntil([&] { return microphones.devices().empty(); }));
}

}  // namespace
}  // namespace zorvane
