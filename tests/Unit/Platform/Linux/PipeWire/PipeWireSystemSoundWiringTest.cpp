#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSoundWiring.hpp"

#include <gtest/gtest.h>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSoundChannels.hpp"

namespace zorvane {
namespace {

using Channels = std::vector<std::uint32_t>;
using Kind = PipeWireSoundPort::Kind;
using Wires = std::set<PipeWireWire>;

constexpr std::uint32_t sink = 30;
constexpr std::uint32_t player = 40;
constexpr std::int32_t playersProcess = 1000;

PipeWireSoundPort port(std::uint64_t serial, Kind kind, const char* channel, std::chrono::milliseconds latency = {}) {
    return {.serial = serial, .kind = kind, .channel = channel, .latency = {.time = latency}};
}

PipeWireSoundNode speakers(std::uint32_t id, const char* name, std::uint64_t firstPort) {
    return {.id = id,
            .mediaClass = "Audio/Sink",
            .name = name,
            .ports = {port(firstPort, Kind::input, "FL", std::chrono::milliseconds(20)),
                      port(firstPort + 1, Kind::monitor, "FL"), port(firstPort + 2, Kind::monitor, "FR")}};
}

PipeWireSoundNode stream(std::uint32_t id, std::int64_t process, std::uint64_t firstPort) {
    return {.id = id,
            .mediaClass = "Stream/Output/Audio",
            .processID = process,
            .properties = {{"object.serial", std::to_string(1000 + firstPort)}},
            .ports = {port(firstPort, Kind::output, "FL", std::chrono::milliseconds(20)),
                      port(firstPort + 1, Kind::output, "FR", std::chrono::milliseconds(20))}};
}

PipeWireSoundScene scene() {
    return {.isConnected = true,
            .nodes = {speakers(sink, "speakers", 100), stream(player, playersProcess, 200)},
            .links = {{.outputNode = player, .inputNode = sink}},
            .defaultSinkName = "speakers"};
}

PipeWireSystemSoundWiring wiring(const SCAudibleProcesses& audible) {
    return {audible, [](std::int32_t process) { return std::vector<std::int32_t>{process, 1}; }};
}

TEST(PipeWireSystemSoundChannelsTest, EveryChannelGoesWhereItsSpeakerIsOrToTheNearestOnes) {
    enum : std::uint32_t { FL, FR, FC, LFE, RL, RR, SL, SR };
    struct Case {
        const char* channel;
        std::size_t channelsOfNode;
        Channels expected;
    };
    const Case cases[] = {
        {"FL", 2, {FL}},     {"SR", 8, {SR}},     {"LFE", 6, {LFE}},     {"FC", 1, {FC}},
        {"RC", 7, {RL, RR}}, {"TFR", 12, {FR}},   {"MONO", 1, {FL, FR}}, {"AUX0", 1, {FL, FR}},
        {"AUX0", 18, {FL}},  {"AUX17", 18, {FR}}, {"", 1, {FL, FR}},     {"UNK", 2, {FL, FR}},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(systemSoundChannelsFor(each.channel, each.channelsOfNode), each.expected) << each.channel;
    }
}

TEST(PipeWireSystemSoundWiringTest, TheSystemsSoundIsTheMonitorOfTheSinkThatIsTheDefaultOne) {
    PipeWireSystemSoundWiring all = wiring({});
    PipeWireSoundScene both = scene();
    both.nodes.push_back(speakers(31, "headphones", 110));
    const auto before = all.sourcesIn(both);
    EXPECT_EQ(before.wires, (Wires{{101, 0}, {102, 1}}));
    EXPECT_EQ(before.distance.latency.time, std::chrono::milliseconds(20)) << "the one of the sink's inputs";
    EXPECT_EQ(before.distance.monitoredSink, sink);

    both.defaultSinkName = "headphones";
    EXPECT_EQ(all.sourcesIn(both).wires, (Wires{{111, 0}, {112, 1}}));
    both.defaultSinkName = "gone";
    EXPECT_TRUE(all.sourcesIn(both).wires.empty());
}

TEST(PipeWireSystemSoundWiringTest, StreamsOfProcessesInQuestionAreWiredPortByPort) {
    const Wires ofPlayer{{200, 0}, {201, 1}};
    EXPECT_EQ(wiring({.only = {{playersProcess}}}).sourcesIn(scene()).wires, ofPlayer);
    EXPECT_EQ(wiring({.except = {999}}).sourcesIn(scene()).wires, ofPlayer);
    EXPECT_TRUE(wiring({.only = {{999}}}).sourcesIn(scene()).wires.empty());
    EXPECT_TRUE(wiring({.except = {playersProcess}}).sourcesIn(scene()).wires.empty());
    const auto distance = wiring({.except = {999}}).sourcesIn(scene()).distance;
    EXPECT_EQ(distance.side, PipeWireSoundDistance::Side::played);
    EXPECT_EQ(distance.latency.time, std::chrono::milliseconds(20));
    EXPECT_EQ(distance.monitoredSink, std::nullopt);
}

TEST(PipeWireSystemSoundWiringTest, AStreamCountsOnceItHasPlayedToASink) {
    PipeWireSystemSoundWiring others = wiring({.except = {999}});
    PipeWireSoundScene now = scene();
    now.links = {};
    EXPECT_TRUE(others.sourcesIn(now).wires.empty());
    now.links = scene().links;
    EXPECT_EQ(others.sourcesIn(now).wires.size(), 2u);
    now.links = {};
    EXPECT_EQ(others.sourcesIn(now).wires.size(), 2u) << "it is moved from one sink to another";
    now.nodes[1].properties["object.serial"] = "7";
    EXPECT_TRUE(others.sourcesIn(now).wires.empty()) << "another stream has got its number";
}

TEST(PipeWireSystemSoundWiringTest, LoopbacksAreNoStreams) {
    PipeWireSoundScene now = scene();
    now.nodes[1].properties["node.link-group"] = "loopback-1";
    EXPECT_TRUE(wiring({.except = {999}}).sourcesIn(now).wires.empty());
}

TEST(PipeWireSystemSoundWiringTest, AStreamStaysWhoseItWasWhenItAppeared) {
    int questions = 0;
    PipeWireSystemSoundWiring chosen({.only = {{playersProcess}}}, [&](std::int32_t process) {
        ++questions;
        return questions == 1 ? std::vector<std::int32_t>{process} : std::vector<std::int32_t>{};
    });
    EXPECT_EQ(chosen.sourcesIn(scene()).wires.size(), 2u);
    EXPECT_EQ(chosen.sourcesIn(scene()).wires.size(), 2u);
    EXPECT_EQ(questions, 1);
}

}  // namespace
}  // namespace zorvane
