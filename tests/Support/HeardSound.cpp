#include "tests/Support/HeardSound.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace zorvane::test {

HeardSound::HeardSound(const std::vector<CollectedSample>& samples, std::uint32_t channel) {
    std::optional<CMTime> end;
    for (const CollectedSample& sample : samples) {
        if (!sample.sound) {
            continue;
        }
        const AVAudioFormat& format = sample.sound->format();
        if (!end) {
            begin_ = sample.hostTime;
            rate_ = format.sampleRate;
        }
        isContiguous_ = isContiguous_ && (!end || *end == sample.stamp);
        end = sample.stamp + CMTime::make(sample.sound->frameLength(), static_cast<std::int32_t>(rate_));
        frames_.resize(indexAt(sample.hostTime));  // a gap is silent
        for (std::size_t frame = 0; frame < sample.sound->frameLength(); ++frame) {
            float value = 0;
            const std::size_t place = frame * format.bytesPerFrame() + channel * sizeof(value);
            std::memcpy(&value, sample.sound->bytes().data() + place, sizeof(value));
            frames_.push_back(value);
        }
    }
}

double HeardSound::end() const {
    return begin_ + static_cast<double>(frames_.size()) / rate_;
}

double HeardSound::level(double frequency, double from, double to) const {
    const std::size_t first = std::min(indexAt(from), frames_.size());
    const std::size_t last = std::min(indexAt(to), frames_.size());
    double real = 0;
    double imaginary = 0;
    for (std::size_t index = first; index < last; ++index) {
        const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(index) / rate_;
        real += frames_[index] * std::cos(angle);
        imaginary += frames_[index] * std::sin(angle);
    }
    return last > first ? 2 * std::hypot(real, imaginary) / static_cast<double>(last - first) : 0;
}

double HeardSound::peak() const {
    const auto highest = std::ranges::max_element(frames_, {}, [](float value) { return std::abs(value); });
    return highest == frames_.end() ? 0 : std::abs(*highest);
}

std::optional<double> HeardSound::firstAbove(double value, double from) const {
    for (std::size_t index = indexAt(from); index < frames_.size(); ++index) {
        if (std::abs(frames_[index]) >= value) {
            return begin_ + static_cast<double>(index) / rate_;
        }
    }
    return std::nullopt;
}

std::size_t HeardSound::indexAt(double time) const {
    return static_cast<std::size_t>(std::max(0.0, std::round((time - begin_) * rate_)));
}

}  // namespace zorvane::test
