#include "Zorvane/Internal/Recorders/HostTimePlacement.hpp"

#include <cmath>

#include "Zorvane/Platform/CoreMedia/CMClock.hpp"

namespace zorvane {
namespace {

constexpr double arrivalTolerance = 0.1;  // seconds: how late a sample may arrive because the machine is busy
constexpr double clockTolerance = 1.5;    // units of the timescale

/// By how much the source's clock is behind, going by the end of a sample that has arrived just now.
double shiftByArrival(const CMSampleBuffer& sampleBuffer) {
    const CMTime duration = sampleBuffer.duration();
    const CMTime begin = hostTimeClockTime() - (duration.isNumeric() ? duration : kCMTimeZero);
    return (begin - sampleBuffer.presentationTimeStamp()).seconds();
}

}  // namespace

CMTime hostTimeOf(const CMSampleBuffer& sampleBuffer, const CMClock* clock) {
    return clock ? clock->convertToHostTime(sampleBuffer.presentationTimeStamp()) : hostTimeClockTime();
}

CMSampleBuffer HostTimePlacement::place(const CMSampleBuffer& sampleBuffer, const CMClock* clock) {
    const CMTime time = sampleBuffer.presentationTimeStamp();
    if (!time.isNumeric()) {
        return sampleBuffer;
    }
    const double shift = clock ? (clock->convertToHostTime(time) - time).seconds() : shiftByArrival(sampleBuffer);
    const double tolerance = clock ? clockTolerance / time.timescale : arrivalTolerance;
    if (!shift_ || std::abs(shift - shift_->seconds()) > tolerance) {
        shift_ = CMTime::fromSeconds(shift, time.timescale);
    }
    if (*shift_ == kCMTimeZero) {
        return sampleBuffer;
    }
    CMSampleTimingInfo timing = sampleBuffer.timing();
    timing.presentationTimeStamp = time + *shift_;
    return sampleBuffer.copyWithNewTiming(timing);
}

}  // namespace zorvane
