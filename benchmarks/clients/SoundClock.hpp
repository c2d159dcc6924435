// When a stream's sound is heard, and a stream that plays by that.
#pragma once

#include <pipewire/pipewire.h>
#include <spa/param/audio/raw.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace zorvane::benchmarks {

/// The moment on `CLOCK_MONOTONIC` at which the frame is heard that `stream`, which plays at `rate` frames per second,
/// queues next. Of the thread that processes the stream.
std::chrono::nanoseconds nextFrameHeardAt(pw_stream* stream, double rate);

/// A mono stream that PipeWire connects to the speakers, at 48 kHz. It is heard from construction to destruction.
class SoundPlayer {
  public:
    static constexpr double rate = 48000;

    /// The sample that is to be heard at a moment, between -1 and 1. Called on PipeWire's real-time thread.
    using Wave = std::function<float(std::chrono::nanoseconds heardAt)>;

    struct Settings {
        std::map<std::string, std::string> properties;  ///< of the stream, beside its usual ones
        std::uint32_t channel = SPA_AUDIO_CHANNEL_MONO;
    };

    explicit SoundPlayer(Wave wave);
    SoundPlayer(Wave wave, const Settings& settings);
    SoundPlayer(const SoundPlayer&) = delete;
    SoundPlayer& operator=(const SoundPlayer&) = delete;
    ~SoundPlayer();

    /// Waits until the speakers take the stream's sound. Ends the process with a message after ten seconds.
    void awaitPlaying();

  private:
    static void onProcess(void* self);
    static void onStateChanged(void* self, pw_stream_state before, pw_stream_state now, const char* error);
    void process();

    const Wave wave_;
    pw_thread_loop* loop_;
    pw_stream* stream_ = nullptr;
};

}  // namespace zorvane::benchmarks
