// A microphone that says when each of its samples was heard.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "tests/Support/SoundCollector.hpp"

namespace zorvane {

/// A node on the PipeWire of the environment, with a port for each channel. A sample of channel 1 is the fraction of
/// the second of the host clock at which it was "in the air"; channel n has n times that. Throws `std::runtime_error`.
class PipeWireTestMicrophone {
  public:
    struct Settings {
        std::string name;
        std::uint32_t channelCount = 1;
        std::chrono::nanoseconds latency{0};  ///< from the air to the port; the port tells it
    };

    /// Returns when the server lists it.
    explicit PipeWireTestMicrophone(Settings settings);
    ~PipeWireTestMicrophone();

  private:
    struct State;

    const std::unique_ptr<State> state_;
};

/// The distance in time, in seconds, between where half of such a microphone's frames stand and when they were heard,
/// or less. An overloaded machine makes that of some frames larger.
double errorOfTime(const SoundCollector::Samples& samples);

}  // namespace zorvane
