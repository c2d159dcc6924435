// The links into a node of ours.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireHandles.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireWire.hpp"

namespace zorvane {

/// Makes the links that were asked for, and takes all others away. It lives as long as a connection, on the session's
/// thread.
///
/// The server tells who is linked to the node, in the order in which things happened. What isn't a wire that was asked
/// for is taken away: a link that another program made, and one of ours that came too late and met another port,
/// because the server had given the number of one that is gone to a new one.
class PipeWireInputLinks {
  public:
    /// `ownNode` tells the number of our node at the server.
    PipeWireInputLinks(pw_core& core, std::function<std::uint32_t()> ownNode);
    PipeWireInputLinks(const PipeWireInputLinks&) = delete;
    PipeWireInputLinks& operator=(const PipeWireInputLinks&) = delete;
    ~PipeWireInputLinks();

    enum class Waking : std::uint8_t { wakes, letsSleep };

    /// Links as soon as all ports concerned are there; what is linked already stays.
    void setWires(std::set<PipeWireWire> wires, Waking waking);

    /// Called when a link that was asked for can't work, with the server's words for why. It is made no more until it
    /// is asked for anew. Not to destroy the links in.
    void onFailure(std::function<void(const std::string& reason)> handler) { failed_ = std::move(handler); }

  private:
    class Link;

    void add(std::uint32_t id, std::string_view type, const spa_dict* properties);
    void addPort(std::uint32_t id, const spa_dict* properties);
    void inspectLink(std::uint32_t id, const spa_dict* properties);
    void linkWhatIsMissing();

    static void onGlobal(void* self, std::uint32_t id, std::uint32_t permissions, const char* type,
                         std::uint32_t version, const spa_dict* properties);
    static void onGlobalRemoved(void* self, std::uint32_t id);

    pw_core& core_;
    const std::function<std::uint32_t()> ownNode_;
    std::function<void(const std::string&)> failed_;
    PipeWireProxy registry_;
    std::map<std::uint32_t, std::uint64_t> serials_;   // of all ports, by their numbers
    std::map<std::uint32_t, std::uint32_t> ownPorts_;  // numbers by input
    std::set<PipeWireWire> wires_;
    Waking waking_ = Waking::wakes;
    std::map<PipeWireWire, std::unique_ptr<Link>> links_;
};

}  // namespace zorvane
