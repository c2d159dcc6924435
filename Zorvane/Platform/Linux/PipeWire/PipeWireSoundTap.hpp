// Our node in the server's graph.
#pragma once

#include <pipewire/filter.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/FileDescriptor.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireHandles.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireInputLinks.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundSources.hpp"
#include "Zorvane/Platform/Linux/PipeWire/SoundRing.hpp"

namespace zorvane {

/// Where the real-time thread leaves its sound.
struct SoundFeed {
    explicit SoundFeed(std::uint32_t channels);

    const std::uint32_t channelCount;
    SoundRing ring;
    std::atomic<std::uint64_t> lostCycles{0};  ///< for which the ring had no room
    const FileDescriptor wakeUp;               ///< an event that is signalled after each cycle
};

/// One port for each channel, and the links to them. It lives as long as a connection. On the session's thread, but for
/// `process`, which runs on PipeWire's real-time thread and never again after the destructor has returned.
class PipeWireSoundTap {
  public:
    /// `feed` outlives the tap. Throws `NSError` if PipeWire can't make a node.
    PipeWireSoundTap(pw_core& core, const std::string& name, SoundFeed& feed);
    PipeWireSoundTap(const PipeWireSoundTap&) = delete;
    PipeWireSoundTap& operator=(const PipeWireSoundTap&) = delete;
    ~PipeWireSoundTap();

    using Side = PipeWireSoundDistance::Side;

    /// Links as soon as all ports concerned are there. To hear what is recorded wakes a microphone; to hear what is
    /// played keeps nothing awake: speakers sleep while nobody plays.
    void setWires(std::set<PipeWireWire> wires, Side side);

  private:
    struct FilterDeleter {
        void operator()(pw_filter* filter) const { pw_filter_destroy(filter); }
    };

    void addPorts();

    static void onProcess(void* self, spa_io_position* position);

    SoundFeed& feed_;
    // What the real-time thread uses outlives the filter, whose end waits for it.
    std::vector<const float*> channels_;  // of one cycle
    std::int64_t position_ = 0;           // in our own count
    std::vector<void*> ports_;            // as the filter knows them; constant once it is connected
    const std::unique_ptr<pw_filter, FilterDeleter> filter_;
    PipeWireHook filterHook_;
    PipeWireInputLinks links_;
};

}  // namespace zorvane
