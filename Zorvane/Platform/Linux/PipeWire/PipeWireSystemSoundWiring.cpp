#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSoundWiring.hpp"

#include <algorithm>
#include <utility>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSoundChannels.hpp"

namespace zorvane {
namespace {

using Kind = PipeWireSoundPort::Kind;

bool isStream(const PipeWireSoundNode& node) {
    return node.mediaClass == "Stream/Output/Audio" && rawValue(node.properties, "node.link-group").empty();
}

const std::string& serialOf(const PipeWireSoundNode& node) {
    return rawValue(node.properties, "object.serial");
}

bool playsToSink(const PipeWireSoundNode& node, const PipeWireSoundScene& scene) {
    return std::ranges::any_of(scene.links, [&](const PipeWireSoundLink& link) {
        const PipeWireSoundNode* receiver = link.outputNode == node.id ? scene.node(link.inputNode) : nullptr;
        return receiver && (receiver->mediaClass == "Audio/Sink" || receiver->mediaClass == "Audio/Duplex");
    });
}

void wire(const PipeWireSoundNode& node, Kind kind, std::set<PipeWireWire>& wires) {
    const auto count = static_cast<std::size_t>(std::ranges::count(node.ports, kind, &PipeWireSoundPort::kind));
    for (const PipeWireSoundPort& port : node.ports) {
        if (port.kind == kind) {
            for (const std::uint32_t channel : systemSoundChannelsFor(port.channel, count)) {
                wires.insert({.outputPort = port.serial, .input = channel});
            }
        }
    }
}

PipeWireLatency latencyOf(const PipeWireSoundNode& node, Kind kind) {
    const auto port = std::ranges::find(node.ports, kind, &PipeWireSoundPort::kind);
    return port == node.ports.end() ? PipeWireLatency{} : port->latency;
}

PipeWireSoundSources silence() {
    return {.wires = {}, .distance = {.side = PipeWireSoundDistance::Side::played}};
}

PipeWireSoundSources defaultSinkIn(const PipeWireSoundScene& scene) {
    PipeWireSoundSources sources = silence();
    if (const PipeWireSoundNode* sink = scene.node(scene.defaultSinkName)) {
        wire(*sink, Kind::monitor, sources.wires);
        sources.distance.latency = latencyOf(*sink, Kind::input);
        sources.distance.monitoredSink = sink->id;
    }
    return sources;
}

}  // namespace

PipeWireSystemSoundWiring::PipeWireSystemSoundWiring(SCAudibleProcesses audible, Lineage lineage)
    : audible_(std::move(audible)), lineage_(std::move(lineage)) {}

PipeWireSoundSources PipeWireSystemSoundWiring::sourcesIn(const PipeWireSoundScene& scene) {
    return audible_.areAll() ? defaultSinkIn(scene) : streamsIn(scene);
}

PipeWireSoundSources PipeWireSystemSoundWiring::streamsIn(const PipeWireSoundScene& scene) {
    streams_ = currentStreams(scene);
    PipeWireSoundSources sources = silence();
    for (const PipeWireSoundNode& node : scene.nodes) {
        const auto known = streams_.find(serialOf(node));
        if (known == streams_.end() || !known->second.isAudible || !known->second.hasPlayed) {
            continue;
        }
        if (sources.wires.empty()) {
            sources.distance.latency = latencyOf(node, Kind::output);
        }
        wire(node, Kind::output, sources.wires);
    }
    return sources;
}

std::map<std::string, PipeWireSystemSoundWiring::Stream> PipeWireSystemSoundWiring::currentStreams(
    const PipeWireSoundScene& scene) const {
    std::map<std::string, Stream> current;
    for (const PipeWireSoundNode& node : scene.nodes) {
        if (isStream(node)) {
            const auto known = streams_.find(serialOf(node));
            Stream stream = known == streams_.end() ? Stream{.isAudible = isAudible(node)} : known->second;
            stream.hasPlayed = stream.hasPlayed || playsToSink(node, scene);
            current.emplace(serialOf(node), stream);
        }
    }
    return current;
}

bool PipeWireSystemSoundWiring::isAudible(const PipeWireSoundNode& node) const {
    return audible_.include(lineage_(static_cast<std::int32_t>(node.processID)));
}

}  // namespace zorvane
