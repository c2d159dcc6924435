// Where the frames of a source lie on the host clock.
#pragma once

#include <chrono>
#include <cstdint>

namespace zorvane {

/// The line from a source's count of frames to host time: a place and a slope, corrected by each time that the source
/// tells. Times are taken to be off by chance to either side, so the line runs through their mean.
///
/// A loop of second order whose gains follow from what is known so far: at first the place is the plain mean of few
/// times, within seconds the slope is learned, and from then on the loop forgets what is older than about ten seconds,
/// since no clock keeps its rate for ever. Gaps and blocks of any size are in order. Pure; used by one thread at a
/// time.
class DelayLockedLoop {
  public:
    /// What a source's rate may be off its nominal one; what is beyond is not followed.
    static constexpr double greatestDeviation = 0.01;

    explicit DelayLockedLoop(double nominalRate) : nominalRate_(nominalRate) {}

    /// Begins anew, with the nominal rate, from one time.
    void lock(std::int64_t position, std::chrono::nanoseconds hostTime);

    /// Corrects the line by a time of a frame. Those before the last one are passed over.
    void observe(std::int64_t position, std::chrono::nanoseconds hostTime);

    /// When this frame is, in seconds of the host clock.
    double hostSeconds(std::int64_t position) const;

    /// Seconds from one frame to the next.
    double framePeriod() const { return slope_ / nominalRate_; }

    /// By how much the source runs faster than its nominal rate, as a fraction.
    double rateDeviation() const { return 1 / slope_ - 1; }

  private:
    void predict(std::int64_t position);

    double nominalRate_;
    std::int64_t position_ = 0;  // of the last time
    double time_ = 0;            // of that frame, in seconds
    double slope_ = 1;           // host seconds in one nominal second of the source
    // How uncertain those two are: their variances, and their covariance.
    double timeVariance_ = 0;
    double slopeVariance_ = 0;
    double covariance_ = 0;
};

}  // namespace zorvane
