// Measures how loud a stream of sound is.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane {

/// One pass over each sample, without a lock or an allocation. The level is that of the last full tenth of a second.
class SoundMeter {
  public:
    struct Level {
        double peak = 0;  ///< fractions of full scale, 0 to 1
        double rms = 0;
    };

    /// For every sample of the source, as it comes; by one thread at a time.
    void measure(const CMSampleBuffer& sampleBuffer);

    /// The present level; zero when no sound has come for a while. Any thread.
    Level level() const;

  private:
    struct Sum {
        float peak = 0;
        double squares = 0;
        std::size_t samples = 0;
    };
    template <class Sample>
    static void add(Sum& sum, const AVAudioPCMBuffer& pcm);
    void publish();

    Sum window_;  // of the measuring thread
    std::atomic<float> peak_{0};
    std::atomic<float> rms_{0};
    std::atomic<double> publishedAt_{0};  // seconds on the host clock
};

}  // namespace zorvane
