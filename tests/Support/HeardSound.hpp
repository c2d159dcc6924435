// What a stream's sound samples hold, as one line of sound.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tests/Support/SampleCollector.hpp"

namespace zorvane::test {

/// The sound of collected samples, of one rate: float frames, and where on the host clock they are.
class HeardSound {
  public:
    explicit HeardSound(const std::vector<CollectedSample>& samples, std::uint32_t channel = 0);

    /// In seconds on the host clock; both 0 without sound.
    double begin() const { return begin_; }
    double end() const;
    /// Whether each sample begins where the one before ended, to the frame.
    bool isContiguous() const { return isContiguous_; }

    /// The amplitude of a tone between two times on the host clock.
    double level(double frequency, double from, double to) const;
    /// The same of the newest sound.
    double recentLevel(double frequency, double seconds = 0.1) const {
        return level(frequency, end() - seconds, end());
    }
    /// The highest value of all.
    double peak() const;

    /// When a value that is so high or higher was first heard, at `from` or later.
    std::optional<double> firstAbove(double value, double from) const;

  private:
    std::size_t indexAt(double time) const;

    double begin_ = 0;
    double rate_ = 1;
    bool isContiguous_ = true;
    std::vector<float> frames_;
};

}  // namespace zorvane::test
