#include "SoundClock.hpp"

#include <spa/param/audio/format-utils.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace zorvane::benchmarks {
namespace {

using std::chrono::nanoseconds;

constexpr auto patience = std::chrono::seconds(10);

[[noreturn]] void fail(const char* problem) {
    std::fprintf(stderr, "test client: %s\n", problem);
    std::exit(EXIT_FAILURE);
}

nanoseconds length(double frames, double rate) {
    return nanoseconds(std::llround(frames * 1e9 / rate));
}

}  // namespace

// What is queued and what the resampler holds comes first; then the way to the speakers.
nanoseconds nextFrameHeardAt(pw_stream* stream, double rate) {
    pw_time time{};
    pw_stream_get_time_n(stream, &time, sizeof(time));
    const double graphRate = time.rate.num ? static_cast<double>(time.rate.denom) / time.rate.num : rate;
    const auto ahead = static_cast<double>(time.queued / sizeof(float) + time.buffered);
    return nanoseconds(time.now) + length(ahead, rate) + length(static_cast<double>(time.delay), graphRate);
}

SoundPlayer::SoundPlayer(Wave wave) : SoundPlayer(std::move(wave), Settings()) {}

SoundPlayer::SoundPlayer(Wave wave, const Settings& settings) : wave_(std::move(wave)) {
    static const pw_stream_events events = [] {
        pw_stream_events made{};
        made.version = PW_VERSION_STREAM_EVENTS;
        made.state_changed = &SoundPlayer::onStateChanged;
        made.process = &SoundPlayer::onProcess;
        return made;
    }();
    pw_init(nullptr, nullptr);
    loop_ = pw_thread_loop_new("player", nullptr);
    pw_thread_loop_lock(loop_);
    pw_properties* properties = pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                                                  PW_KEY_APP_NAME, "Test Client", nullptr);
    for (const auto& [key, value] : settings.properties) {
        pw_properties_set(properties, key.c_str(), value.c_str());
    }
    stream_ = pw_stream_new_simple(pw_thread_loop_get_loop(loop_), "test client", properties, &events, this);
    std::array<std::uint8_t, 1024> buffer{};
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = static_cast<std::uint32_t>(rate);
    format.channels = 1;
    format.position[0] = settings.channel;
    const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    const auto flags = static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS |
                                                    PW_STREAM_FLAG_RT_PROCESS);
    if (pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, &parameter, 1) < 0 ||
        pw_thread_loop_start(loop_) < 0) {
        fail("there is no PipeWire");
    }
    pw_thread_loop_unlock(loop_);
}

SoundPlayer::~SoundPlayer() {
    pw_thread_loop_stop(loop_);
    pw_stream_destroy(stream_);
    pw_thread_loop_destroy(loop_);
}

void SoundPlayer::awaitPlaying() {
    pw_thread_loop_lock(loop_);
    timespec deadline{};
    pw_thread_loop_get_time(loop_, &deadline, nanoseconds(patience).count());
    while (pw_stream_get_state(stream_, nullptr) != PW_STREAM_STATE_STREAMING) {
        if (pw_thread_loop_timed_wait_full(loop_, &deadline) < 0) {
            fail("nobody plays the sound");
        }
    }
    pw_thread_loop_unlock(loop_);
}

void SoundPlayer::onStateChanged(void* self, pw_stream_state, pw_stream_state, const char*) {
    pw_thread_loop_signal(static_cast<SoundPlayer*>(self)->loop_, false);
}

void SoundPlayer::onProcess(void* self) {
    static_cast<SoundPlayer*>(self)->process();
}

void SoundPlayer::process() {
    const nanoseconds first = nextFrameHeardAt(stream_, rate);
    pw_buffer* buffer = pw_stream_dequeue_buffer(stream_);
    if (!buffer) {
        return;
    }
    spa_data& data = buffer->buffer->datas[0];
    auto* samples = static_cast<float*>(data.data);
    std::uint64_t frames = data.maxsize / sizeof(float);
    if (buffer->requested != 0) {
        frames = std::min(frames, buffer->requested);
    }
    for (std::uint64_t frame = 0; frame < frames; ++frame) {
        samples[frame] = wave_(first + length(static_cast<double>(frame), rate));
    }
    data.chunk->offset = 0;
    data.chunk->stride = sizeof(float);
    data.chunk->size = static_cast<std::uint32_t>(frames * sizeof(float));
    buffer->size = data.chunk->size;
    pw_stream_queue_buffer(stream_, buffer);
}

}  // namespace zorvane::benchmarks
