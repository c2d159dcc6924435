#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundTap.hpp"

#include <spa/param/latency-utils.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

constexpr std::size_t mostFrames = 48000;  // one second, which nobody but a stopped machine waits for
constexpr std::size_t mostCycles = 2048;   // of a second in the shortest cycles that occur

/// A stream to the eyes of other programs, which show who listens; but the session manager leaves it alone.
pw_properties* nodeProperties(const std::string& name) {
    return pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_MEDIA_CLASS,
                             "Stream/Input/Audio", PW_KEY_MEDIA_NAME, name.c_str(), PW_KEY_NODE_NAME, name.c_str(),
                             PW_KEY_NODE_AUTOCONNECT, "false", PW_KEY_NODE_DONT_RECONNECT, "true", nullptr);
}

std::chrono::nanoseconds monotonicTime() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

constexpr auto filterFlags = static_cast<pw_filter_flags>(PW_FILTER_FLAG_RT_PROCESS | PW_FILTER_FLAG_CUSTOM_LATENCY);

/// An application asks how long its sound takes to be heard, and is told what lies between the shortest and the longest
/// way. One who only listens must not count, or pictures and sound of who is recorded would drift apart for its user.
class LatencyOfNobody {
  public:
    LatencyOfNobody() {
        spa_latency_info latency;
        spa_latency_info_combine_start(&latency, SPA_DIRECTION_INPUT);
        spa_pod_builder builder;
        spa_pod_builder_init(&builder, memory_.data(), static_cast<std::uint32_t>(memory_.size()));
        parameter_ = spa_latency_build(&builder, SPA_PARAM_Latency, &latency);
    }

    const spa_pod** parameters() { return &parameter_; }

  private:
    alignas(spa_pod) std::array<std::uint8_t, 256> memory_{};
    const spa_pod* parameter_;
};

pw_filter* makeFilter(pw_core& core, const std::string& name) {
    pw_filter* filter = pw_filter_new(&core, name.c_str(), nodeProperties(name));
    if (!filter) {
        throw NSError::posix(errno, "make a node of PipeWire");
    }
    return filter;
}

}  // namespace

SoundFeed::SoundFeed(std::uint32_t channels)
    : channelCount(channels), ring(channels, mostFrames, mostCycles), wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!wakeUp) {
        throw NSError::posix(errno, "make an event");
    }
}

PipeWireSoundTap::PipeWireSoundTap(pw_core& core, const std::string& name, SoundFeed& feed)
    : feed_(feed),
      channels_(feed.channelCount),
      filter_(makeFilter(core, name)),
      links_(core, [this] { return pw_filter_get_node_id(filter_.get()); }) {
    static const pw_filter_events filterEvents{.version = PW_VERSION_FILTER_EVENTS, .process = onProcess};
    pw_filter_add_listener(filter_.get(), filterHook_.get(), &filterEvents, this);
    addPorts();
    if (const int result = pw_filter_connect(filter_.get(), filterFlags, nullptr, 0); result < 0) {
        throw NSError::posix(-result, "connect a node of PipeWire");
    }
}

/// In some versions of PipeWire the real-time thread goes through the listeners, so it ends before ours is taken away.
PipeWireSoundTap::~PipeWireSoundTap() {
    pw_filter_disconnect(filter_.get());
}

void PipeWireSoundTap::addPorts() {
    LatencyOfNobody latency;
    for (std::uint32_t channel = 0; channel < feed_.channelCount; ++channel) {
        const std::string name = "input_" + std::to_string(channel + 1);
        ports_.push_back(pw_filter_add_port(
            filter_.get(), PW_DIRECTION_INPUT, PW_FILTER_PORT_FLAG_MAP_BUFFERS, 1,
            pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio", PW_KEY_PORT_NAME, name.c_str(), nullptr),
            latency.parameters(), 1));
        if (!ports_.back()) {
            throw NSError::posix(errno, "make a port of PipeWire");
        }
    }
}

void PipeWireSoundTap::setWires(std::set<PipeWireWire> wires, Side side) {
    using enum PipeWireInputLinks::Waking;
    links_.setWires(std::move(wires), side == Side::played ? letsSleep : wakes);
}

void PipeWireSoundTap::onProcess(void* data, spa_io_position* position) {
    auto& self = *static_cast<PipeWireSoundTap*>(data);
    if (!position) {
        return;
    }
    const spa_io_clock& clock = position->clock;
    const auto frames = static_cast<std::uint32_t>(clock.duration);
    for (std::size_t channel = 0; channel < self.ports_.size(); ++channel) {
        self.channels_[channel] = static_cast<const float*>(pw_filter_get_dsp_buffer(self.ports_[channel], frames));
    }
    // Some drivers that exist in software only have no clock; then what comes is counted, and happens now.
    const bool isTimed = clock.nsec != 0;
    const SoundCycle cycle{.clock = clock.id,
                           .position = isTimed ? static_cast<std::int64_t>(clock.position) : self.position_,
                           .time = isTimed ? std::chrono::nanoseconds(clock.nsec) : monotonicTime(),
                           .rate = static_cast<double>(clock.rate.denom) / clock.rate.num,
                           .frames = frames};
    if (!self.feed_.ring.push(cycle, self.channels_)) {
        self.feed_.lostCycles.fetch_add(1, std::memory_order_relaxed);
    }
    self.position_ += frames;
    eventfd_write(self.feed_.wakeUp.get(), 1);
}

}  // namespace zorvane
