// Streams of sound, and programs that play.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"
#include "benchmarks/clients/SoundClock.hpp"
#include "tests/Support/HeardSound.hpp"
#include "tests/Support/SampleCollector.hpp"

namespace zorvane {

using benchmarks::SoundPlayer;
using test::HeardSound;

/// Numbers that no process has, for players to say that they belong to.
inline constexpr std::int32_t oneProcess = 5'000'001;
inline constexpr std::int32_t otherProcess = 5'000'002;

inline constexpr double low = 440;  // Hz; in 100 ms each is silent to who listens for the other one
inline constexpr double high = 1000;
inline constexpr double loud = 0.25;  // a tone's amplitude
inline constexpr double audible = 0.2;
inline constexpr double inaudible = 0.002;

/// Plays a tone as a program of its own would through PulseAudio: `processID` is what the stream says of itself.
inline std::unique_ptr<SoundPlayer> play(double frequency, std::int32_t processID,
                                         std::map<std::string, std::string> properties = {},
                                         std::uint32_t channel = SPA_AUDIO_CHANNEL_MONO) {
    properties["client.api"] = "pipewire-pulse";
    properties["application.process.id"] = std::to_string(processID);
    const auto tone = [frequency](std::chrono::nanoseconds heardAt) {
        const double turns = std::fmod(std::chrono::duration<double>(heardAt).count() * frequency, 1);
        return static_cast<float>(loud * std::sin(2 * std::numbers::pi * turns));
    };
    auto player = std::make_unique<SoundPlayer>(tone, SoundPlayer::Settings{std::move(properties), channel});
    player->awaitPlaying();
    return player;
}

/// A stream of sound alone, and what comes of it.
class SoundStream {
  public:
    SoundStream(SCScreenCapture& capture, const SCContentFilter& filter, SCStreamConfiguration configuration = {}) {
        configuration.capturesAudio = true;
        stream_ = capture.makeStream(filter, configuration, collector_);
        stream_->addStreamOutput(collector_, SCStreamOutputType::audio, DispatchQueue::serial("SoundStream"));
    }
    ~SoundStream() { stop(); }

    std::exception_ptr start() {
        test::CompletionResult started;
        stream_->startCapture(started.handler());
        return started.wait();
    }

    std::exception_ptr stop() {
        test::CompletionResult stopped;
        stream_->stopCapture(stopped.handler());
        return stopped.wait();
    }

    const test::SampleCollector& collector() const { return *collector_; }
    HeardSound heard(std::uint32_t channel = 0) const { return HeardSound(collector_->samples(), channel); }

    /// Waits until all that came lately satisfies the condition; false when it doesn't within ten seconds.
    template <class Condition>
    bool waitFor(Condition condition, std::uint32_t channel = 0) const {
        return collector_->waitUntil([&](const std::vector<test::CollectedSample>& samples) {
            const std::size_t newest = std::min<std::size_t>(samples.size(), 40);
            const HeardSound recent({samples.end() - static_cast<std::ptrdiff_t>(newest), samples.end()}, channel);
            return recent.end() - recent.begin() > 0.1 && condition(recent);
        });
    }
    bool waitForTone(double frequency, std::uint32_t channel = 0) const {
        return waitFor([&](const HeardSound& recent) { return recent.recentLevel(frequency) > audible; }, channel);
    }
    bool waitForSilence() const {
        return waitFor([](const HeardSound& recent) { return recent.peak() < inaudible; });
    }
    /// Waits until the sound of so much time from now on has come.
    bool waitSeconds(double seconds) const {
        const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
        const double until = now.count() + seconds;
        return waitFor([&](const HeardSound& recent) { return recent.end() >= until; });
    }

  private:
    const std::shared_ptr<test::SampleCollector> collector_ = std::make_shared<test::SampleCollector>();
    std::shared_ptr<SCStream> stream_;
};

inline SCContentFilter soundOf(SCContentFilterKind kind, const std::vector<std::int32_t>& processes = {}) {
    SCContentFilter filter{.kind = kind};
    for (const std::int32_t each : processes) {
        filter.applications.push_back({.processID = each});
    }
    return filter;
}

}  // namespace zorvane
