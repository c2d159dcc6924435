#include "tests/Support/PipeWireTestMicrophone.hpp"

#include <pipewire/filter.h>
#include <pipewire/pipewire.h>
#include <spa/param/latency-utils.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace zorvane {

struct PipeWireTestMicrophone::State {
    explicit State(Settings chosen) : settings(std::move(chosen)) {}

    /// The driver's time is when the cycle begins; what a port gives then was in the air `latency` ago.
    static void onProcess(void* data, spa_io_position* position) {
        const auto& self = *static_cast<State*>(data);
        const spa_io_clock& clock = position->clock;
        const auto begin = std::chrono::nanoseconds(clock.nsec) - self.settings.latency;
        for (std::size_t channel = 0; channel < self.ports.size(); ++channel) {
            auto* samples = static_cast<float*>(pw_filter_get_dsp_buffer(self.ports[channel], clock.duration));
            for (std::uint64_t frame = 0; samples && frame < clock.duration; ++frame) {
                const std::chrono::nanoseconds offset(frame * 1'000'000'000 / clock.rate.denom);
                samples[frame] = static_cast<float>(channel + 1) * self.settings.wave(begin + offset);
            }
        }
    }

    static void onStateChanged(void* data, pw_filter_state, pw_filter_state, const char*) {
        pw_thread_loop_signal(static_cast<State*>(data)->loop, false);
    }

    void addPort(std::uint32_t channel) {
        std::uint8_t bytes[256];
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(bytes, sizeof bytes);
        spa_latency_info latency{.direction = SPA_DIRECTION_OUTPUT};
        latency.min_ns = latency.max_ns = static_cast<std::uint64_t>(settings.latency.count());
        const spa_pod* parameter = spa_latency_build(&builder, SPA_PARAM_Latency, &latency);
        const std::string name = "output_" + std::to_string(channel + 1);
        auto* properties =
            pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio", PW_KEY_PORT_NAME, name.c_str(), nullptr);
        ports.push_back(pw_filter_add_port(filter, PW_DIRECTION_OUTPUT, PW_FILTER_PORT_FLAG_MAP_BUFFERS, 1, properties,
                                           &parameter, 1));
    }

    const Settings settings;
    pw_thread_loop* loop = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    pw_filter* filter = nullptr;
    spa_hook filterHook{};
    std::vector<void*> ports;
};

float PipeWireTestMicrophone::fractionOfTheSecond(std::chrono::nanoseconds inTheAir) {
    return static_cast<float>(inTheAir.count() % 1'000'000'000) / 1e9F;
}

PipeWireTestMicrophone::PipeWireTestMicrophone(Settings settings) : state_(std::make_unique<State>(settings)) {
    pw_init(nullptr, nullptr);
    State& state = *state_;
    state.loop = pw_thread_loop_new("test-microphone", nullptr);
    state.context = pw_context_new(pw_thread_loop_get_loop(state.loop), nullptr, 0);
    state.core = pw_context_connect(state.context, nullptr, 0);
    if (!state.core) {
        throw std::runtime_error("there is no PipeWire to connect to");
    }
    auto* properties =
        pw_properties_new(PW_KEY_MEDIA_CLASS, "Audio/Source", PW_KEY_NODE_NAME, settings.name.c_str(),
                          PW_KEY_NODE_DESCRIPTION, settings.name.c_str(), PW_KEY_NODE_AUTOCONNECT, "false", nullptr);
    // PipeWire's own clock runs it. A camera that is in use would drive whoever has no clock, at its own pace.
    pw_properties_set(properties, PW_KEY_NODE_GROUP, "pipewire.dummy");
    for (const auto& [key, value] : settings.properties) {
        pw_properties_set(properties, key.c_str(), value.c_str());
    }
    state.filter = pw_filter_new(state.core, settings.name.c_str(), properties);
    static const pw_filter_events events{
        .version = PW_VERSION_FILTER_EVENTS, .state_changed = State::onStateChanged, .process = State::onProcess};
    pw_filter_add_listener(state.filter, &state.filterHook, &events, &state);
    for (std::uint32_t channel = 0; channel < settings.channelCount; ++channel) {
        state.addPort(channel);
    }
    pw_filter_connect(state.filter, PW_FILTER_FLAG_RT_PROCESS, nullptr, 0);
    pw_thread_loop_start(state.loop);
    pw_thread_loop_lock(state.loop);
    while (pw_filter_get_node_id(state.filter) == SPA_ID_INVALID) {
        pw_thread_loop_wait(state.loop);
    }
    pw_thread_loop_unlock(state.loop);
}

PipeWireTestMicrophone::~PipeWireTestMicrophone() {
    pw_thread_loop_stop(state_->loop);
    pw_filter_destroy(state_->filter);
    pw_core_disconnect(state_->core);
    pw_context_destroy(state_->context);
    pw_thread_loop_destroy(state_->loop);
}

double errorOfTime(const SoundCollector::Samples& samples) {
    std::vector<double> errors;
    forEachFrame(samples, [&](double time, const float* channels) {
        const double difference = std::abs(channels[0] - (time - std::floor(time)));
        errors.push_back(std::min(difference, 1 - difference));  // around the second
    });
    const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
    std::ranges::nth_element(errors, middle);
    return *middle;
}

}  // namespace zorvane
