#include "Zorvane/Platform/CoreAudio/DelayLockedLoop.hpp"

#include <algorithm>

namespace zorvane {
namespace {

// What is expected of sources. Only proportions matter: they say how fast the loop forgets.

/// The usual error of one time, in seconds.
constexpr double jitter = 0.002;

/// How far off the nominal rate a source usually is.
constexpr double usualDeviation = 0.0005;

/// How far a rate wanders in one second; in the n-th second it has wandered by the root of n times that.
constexpr double wander = 3e-6;

double seconds(std::chrono::nanoseconds time) {
    return std::chrono::duration<double>(time).count();
}

}  // namespace

void DelayLockedLoop::lock(std::int64_t position, std::chrono::nanoseconds hostTime) {
    position_ = position;
    time_ = seconds(hostTime);
    slope_ = 1;
    timeVariance_ = jitter * jitter;
    slopeVariance_ = usualDeviation * usualDeviation;
    covariance_ = 0;
}

double DelayLockedLoop::hostSeconds(std::int64_t position) const {
    return time_ + static_cast<double>(position - position_) * framePeriod();
}

void DelayLockedLoop::observe(std::int64_t position, std::chrono::nanoseconds hostTime) {
    if (position < position_) {
        return;
    }
    predict(position);
    const double error = seconds(hostTime) - time_;
    const double timeGain = timeVariance_ / (timeVariance_ + jitter * jitter);
    const double slopeGain = covariance_ / (timeVariance_ + jitter * jitter);
    time_ += timeGain * error;
    // The slope is the inverse of the rate.
    slope_ = std::clamp(slope_ + slopeGain * error, 1 / (1 + greatestDeviation), 1 / (1 - greatestDeviation));
    slopeVariance_ -= slopeGain * covariance_;
    covariance_ *= 1 - timeGain;
    timeVariance_ *= 1 - timeGain;
}

void DelayLockedLoop::predict(std::int64_t position) {
    const double elapsed = static_cast<double>(position - position_) / nominalRate_;
    constexpr double noise = wander * wander;
    time_ = hostSeconds(position);
    position_ = position;
    timeVariance_ += elapsed * (2 * covariance_ + elapsed * (slopeVariance_ + noise * elapsed / 3));
    covariance_ += elapsed * (slopeVariance_ + noise * elapsed / 2);
    slopeVariance_ += elapsed * noise;
}

}  // namespace zorvane
