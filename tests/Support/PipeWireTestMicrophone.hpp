// A microphone that says when each of its samples was heard.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "tests/Support/SoundCollector.hpp"

namespace zorvane {

/// A node on the PipeWire of the environment, with a port for each channel. A sample of channel 1 is the fraction of
/// the second of the host clock at which it was "in the air"; channel n has n times that. Throws `std::runtime_error`.
class PipeWireTestMicrophone {
  public:
    /// The sample that is in the air at a moment. Called on PipeWire's real-time thread.
    using Wave = std::function<float(std::chrono::nanoseconds inTheAir)>;

    struct Settings {
        std::string name;
        std::uint32_t channelCount = 1;
        std::chrono::nanoseconds latency{0};  ///< from the air to the port; the port tells it
        Wave wave = fractionOfTheSecond;      ///< of channel 1
        std::map<std::string, std::string> properties = {};
    };

    static float fractionOfTheSecond(std::chrono::nanoseconds inTheAir);

    /// Returns when the server lists it.
    explicit PipeWireTestMicrophone(Settings settings);
    ~PipeWireTestMicrophone();

  private:
    struct State;

    const std::unique_ptr<State> state_;
};

/// The distance in time, in seconds, between where half of such a microphone's frames stand and when they were heard,
/// or less.
double errorOfTime(const SoundCollector::Samples& samples);

/// What a right capture stays below on an overloaded machine too: two cycles of the graph. A program that misses its
/// turn takes the next cycle's time for this cycle's sound, and if that is the first one, what follows joins it.
inline constexpr double tolerableErrorOfTime = 0.045;

}  // namespace zorvane
