#include "tests/Support/PipeWireTestSink.hpp"

#include <spa/param/audio/format-utils.h>
#include <spa/param/latency-utils.h>

#include <array>
#include <stdexcept>

namespace zorvane {
namespace {

pw_thread_loop* makeLoop() {
    pw_init(nullptr, nullptr);
    return pw_thread_loop_new("test-sink", nullptr);
}

}  // namespace

PipeWireTestSink::PipeWireTestSink(const std::string& name, std::chrono::nanoseconds latency)
    : latency_(latency), loop_(makeLoop()) {
    static const pw_stream_events events = [] {
        pw_stream_events made{};
        made.version = PW_VERSION_STREAM_EVENTS;
        made.param_changed = onParameter;
        made.process = onProcess;
        return made;
    }();
    auto* properties = pw_properties_new(PW_KEY_MEDIA_CLASS, "Audio/Sink", PW_KEY_NODE_NAME, name.c_str(), nullptr);
    stream_ = pw_stream_new_simple(pw_thread_loop_get_loop(loop_), name.c_str(), properties, &events, this);
    std::array<std::uint8_t, 1024> buffer{};
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = 48000;
    format.channels = 2;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    const auto flags = static_cast<pw_stream_flags>(PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
    if (pw_stream_connect(stream_, PW_DIRECTION_INPUT, PW_ID_ANY, flags, &parameter, 1) < 0 ||
        pw_thread_loop_start(loop_) < 0) {
        throw std::runtime_error("there is no PipeWire to connect to");
    }
}

PipeWireTestSink::~PipeWireTestSink() {
    pw_thread_loop_stop(loop_);
    pw_stream_destroy(stream_);
    pw_thread_loop_destroy(loop_);
}

void PipeWireTestSink::onParameter(void* data, std::uint32_t id, const spa_pod* parameter) {
    auto& self = *static_cast<PipeWireTestSink*>(data);
    if (id != SPA_PARAM_Format || !parameter) {
        return;
    }
    spa_latency_info latency{};
    latency.direction = SPA_DIRECTION_INPUT;
    latency.min_ns = latency.max_ns = static_cast<std::uint64_t>(self.latency_.count());
    std::array<std::uint8_t, 512> buffer{};
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    const spa_pod* told = spa_latency_build(&builder, SPA_PARAM_Latency, &latency);
    pw_stream_update_params(self.stream_, &told, 1);
}

void PipeWireTestSink::onProcess(void* data) {
    pw_stream* stream = static_cast<PipeWireTestSink*>(data)->stream_;
    if (pw_buffer* buffer = pw_stream_dequeue_buffer(stream)) {
        pw_stream_queue_buffer(stream, buffer);
    }
}

}  // namespace zorvane
