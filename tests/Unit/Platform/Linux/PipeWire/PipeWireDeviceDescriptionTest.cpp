#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceDescription.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zorvane {
namespace {

using testing::ElementsAre;
using Transport = AVCaptureDeviceTransportType;
using Type = AVCaptureDeviceType;

PipeWireDeviceDescription microphone(PipeWireProperties node, PipeWireProperties card = {}) {
    return describeDevice({.mediaType = AVMediaType::audio, .node = std::move(node), .card = std::move(card)}, "id");
}

PipeWireSource node(std::uint32_t number, const char* name, PipeWireProperties card = {}) {
    return {.nodeID = number, .node = {{"node.name", name}}, .card = std::move(card)};
}

TEST(PipeWireDeviceDescriptionTest, TheBusAndTheMakerSayHowADeviceIsAttached) {
    struct Case {
        PipeWireProperties properties;
        Transport transport;
        Type type;
    };
    const Case cases[] = {
        {{}, Transport::virtualDevice, Type::external},
        {{{"device.api", "alsa"}, {"device.bus", "usb"}}, Transport::usb, Type::external},
        {{{"device.api", "alsa"}, {"device.bus", "usb"}, {"device.form-factor", "internal"}},
         Transport::builtIn,
         Type::builtInMicrophone},
        {{{"device.api", "alsa"}, {"device.bus", "pci"}}, Transport::builtIn, Type::builtInMicrophone},
        {{{"device.api", "bluez5"}}, Transport::bluetooth, Type::external},
        {{{"device.api", "alsa"}}, Transport::unknown, Type::external},
    };
    for (const Case& one : cases) {
        const auto fromCard = microphone({{"node.name", "n"}}, one.properties);
        EXPECT_EQ(fromCard.transportType, one.transport);
        EXPECT_EQ(fromCard.deviceType, one.type);
        EXPECT_EQ(microphone(one.properties), describeDevice({.card = one.properties}, "id"))
            << "what the node doesn't say, the card does";
    }
    const PipeWireSource camera{.mediaType = AVMediaType::video,
                                .node = {{"device.api", "libcamera"}, {"api.libcamera.location", "front"}}};
    EXPECT_EQ(describeDevice(camera, "id").deviceType, Type::builtInWideAngleCamera);
}

TEST(PipeWireDeviceDescriptionTest, TheBestTextThereIsNamesADevice) {
    PipeWireProperties properties{{"node.name", "alsa_input.usb"}};
    EXPECT_EQ(microphone(properties).localizedName, "alsa_input.usb");
    EXPECT_EQ(microphone(properties, {{"device.description", "Card"}}).localizedName, "Card");
    properties["node.nick"] = "Nick";
    EXPECT_EQ(microphone(properties, {{"device.description", "Card"}}).localizedName, "Nick");
    properties["node.description"] = " \t";
    EXPECT_EQ(microphone(properties).localizedName, "Nick") << "blanks name nothing";
    properties["node.description"] = "Desk Microphone";
    EXPECT_EQ(microphone(properties).localizedName, "Desk Microphone");
}

TEST(PipeWireDeviceDescriptionTest, TheModelIsTheMostExactThatIsKnown) {
    EXPECT_EQ(microphone({}).modelID, "");
    EXPECT_EQ(microphone({}, {{"device.product.name", "C920"}}).modelID, "C920");
    EXPECT_EQ(microphone({}, {{"device.product.name", "C920"}, {"device.product.id", "0x82d"}}).modelID, "0x82d");
    EXPECT_EQ(microphone({}, {{"device.vendor.id", "0x46d"}, {"device.product.id", "0x82d"}}).modelID, "0x46d:0x82d");
    EXPECT_EQ(microphone({}, {{"device.vendor.name", "Maker"}}).manufacturer, "Maker");
}

TEST(PipeWireDeviceIDsTest, ANodeKeepsItsIDAndNoTwoShareOne) {
    PipeWireDeviceIDs ids;
    const auto first = node(1, "a");
    const auto second = node(2, "a", {{"device.serial", "S"}});
    const auto third = node(3, "a");
    EXPECT_THAT(ids.assign({first, second, third}), ElementsAre("a", "a#S", "a#2"));
    EXPECT_THAT(ids.assign({second, third}), ElementsAre("a#S", "a#2"));
    EXPECT_THAT(ids.assign({second, third, node(4, "a")}), ElementsAre("a#S", "a#2", "a"));
    EXPECT_THAT(ids.assign({}), ElementsAre());
    EXPECT_THAT(ids.assign({second}), ElementsAre("a")) << "alone it is the same as after a restart";
}

TEST(PipeWireDeviceIDsTest, ANumberThatIsGivenAgainBringsNoOldID) {
    PipeWireDeviceIDs ids;
    EXPECT_THAT(ids.assign({node(1, "a"), node(2, "a")}), ElementsAre("a", "a#2"));
    EXPECT_THAT(ids.assign({node(1, "a"), node(2, "b")}), ElementsAre("a", "b"));
    EXPECT_THAT(ids.assign({node(7, ""), node(8, "")}), ElementsAre("unnamed", "unnamed#2"));
}

}  // namespace
}  // namespace zorvane
