#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundScene.hpp"

#include <algorithm>
#include <cmath>

namespace zorvane {
namespace {

template <class Value>
const PipeWireSoundNode* find(const std::vector<PipeWireSoundNode>& nodes, const Value& value,
                              Value PipeWireSoundNode::*member) {
    const auto found = std::ranges::find(nodes, value, member);
    return found == nodes.end() ? nullptr : &*found;
}

}  // namespace

std::chrono::nanoseconds PipeWireLatency::at(std::uint32_t quantum, double rate) const {
    const double seconds = (quanta * quantum + static_cast<double>(frames)) / rate;
    return time + std::chrono::nanoseconds(std::llround(seconds * 1e9));
}

const PipeWireSoundNode* PipeWireSoundScene::node(std::string_view name) const {
    return find(nodes, std::string(name), &PipeWireSoundNode::name);
}

const PipeWireSoundNode* PipeWireSoundScene::node(std::uint32_t id) const {
    return find(nodes, id, &PipeWireSoundNode::id);
}

}  // namespace zorvane
