// Fills the holes in a stream of sound with silence.
#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane {

/// Makes what leaves it continuous: every sample begins where the one before it ended, down to one tick. Sound that
/// overlaps is passed on as it is. Used by one thread at a time.
class AudioGapFiller {
  public:
    explicit AudioGapFiller(Logger logger);

    /// One or two samples, to be handed on in this order. Made for range-for.
    class Samples {
      public:
        explicit Samples(CMSampleBuffer only) : samples_{std::move(only), {}}, count_(1) {}
        Samples(CMSampleBuffer first, CMSampleBuffer second)
            : samples_{std::move(first), std::move(second)}, count_(2) {}

        std::size_t size() const { return count_; }
        const CMSampleBuffer& operator[](std::size_t index) const { return samples_[index]; }
        const CMSampleBuffer* begin() const { return samples_.data(); }
        const CMSampleBuffer* end() const { return samples_.data() + count_; }

      private:
        std::array<CMSampleBuffer, 2> samples_;
        std::size_t count_;
    };

    /// The sample, behind the silence that was missing before it. To be called for every sample. Throws when the
    /// silence can't be made; the next call goes on behind this sample. Allocates only for silence.
    Samples process(const CMSampleBuffer& sampleBuffer);

  private:
    Samples filled(const CMSampleBuffer& sampleBuffer, CMTime start, CMTime duration) const;

    const Logger logger_;
    std::optional<CMTime> nextTime_;  // where the next sample is expected to begin
};

}  // namespace zorvane
