// A source of clicks with a clock of its own, an aligner behind it, and what leaves that.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <optional>
#include <random>
#include <span>
#include <vector>

#include "Zorvane/Platform/CoreAudio/SoundAligner.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"

namespace zorvane::testing {

constexpr AVAudioFormat monoFloat(double rate) {
    return {AVAudioCommonFormat::float32, rate, 1};
}

/// How a source's clock and its reports differ from the truth.
struct SourceClock {
    double deviation = 0;        ///< runs faster by this fraction
    double jitter = 0;           ///< host times are off by up to so many seconds, to either side
    double startSeconds = 1000;  ///< when the frame at position 0 truly is
    double constantError = 0;    ///< of all host times, in seconds
    unsigned seed = 1;
};

/// Mono float sound: of one level, which is silence unless said otherwise, and clicks.
class AlignerBench {
  public:
    /// Output frames without a rest between them.
    struct Run {
        std::int64_t first = 0;
        std::vector<float> samples;  // empty unless they are kept

        std::int64_t end = 0;
        std::int64_t length() const { return end - first; }
    };

    AlignerBench(double sourceRate, double outputRate, const SourceClock& sourceClock, std::uint32_t blockSize = 480)
        : clock(sourceClock),
          rate_(sourceRate),
          outputRate_(outputRate),
          random_(sourceClock.seed),
          block_(blockSize),
          aligner(monoFloat(sourceRate), monoFloat(outputRate), converting_,
                  [this](const CMSampleBuffer& sample) { hear(sample); }) {}

    void play(double seconds) { playFrames(std::llround(seconds * rate_)); }

    /// Whole blocks, of which the last one may be short.
    void playFrames(std::int64_t frames) {
        while (frames > 0) {
            const auto length = std::min<std::int64_t>(frames, static_cast<std::int64_t>(block_.size()));
            playBlock(static_cast<std::size_t>(length), std::nullopt);
            frames -= length;
        }
    }

    /// A block with a click in its middle: some frames that rise to full level and fall.
    void click() {
        const std::size_t middle = block_.size() / 2;
        clickSeconds.push_back(trueSeconds(position + static_cast<std::int64_t>(middle)));
        playBlock(block_.size(), middle);
    }

    /// When the frame at this position truly is.
    double trueSeconds(std::int64_t of) const {
        return clock.startSeconds + static_cast<double>(of) / (rate_ * (1 + clock.deviation));
    }

    /// By how many seconds each click is late.
    std::vector<double> lateness() const {
        std::vector<double> late;
        for (std::size_t click = 0; click < clickFrames.size(); ++click) {
            late.push_back(clickFrames[click] / outputRate_ - clickSeconds.at(click));
        }
        return late;
    }

    double worstLateness(std::size_t fromClick = 0) const {
        double worst = 0;
        const std::vector<double> late = lateness();
        for (std::size_t click = fromClick; click < late.size(); ++click) {
            worst = std::max(worst, std::abs(late[click]));
        }
        return worst;
    }

    SourceClock clock;
    std::int64_t position = 0;        ///< of the next block
    std::int64_t positionOffset = 0;  ///< of what the source counts
    float level = 0;                  ///< of all frames but clicks
    bool keepsSamples = false;
    std::vector<Run> runs;
    std::vector<double> clickSeconds;
    std::vector<double> clickFrames;  // with parts of a frame

  private:
    void playBlock(std::size_t length, std::optional<std::size_t> clickAt) {
        std::fill(block_.begin(), block_.end(), level);
        if (clickAt) {
            for (int offset = -clickReach; offset <= clickReach; ++offset) {
                const double rise = std::cos(offset * std::numbers::pi / 2 / clickReach);
                block_[*clickAt + static_cast<std::size_t>(offset)] = static_cast<float>(rise * rise);
            }
        }
        const double error = clock.constantError + std::uniform_real_distribution(-clock.jitter, clock.jitter)(random_);
        const auto hostTime = std::chrono::nanoseconds(std::llround((trueSeconds(position) + error) * 1e9));
        aligner.process({position + positionOffset, hostTime, std::as_bytes(std::span(block_).first(length))});
        position += static_cast<std::int64_t>(length);
    }

    void hear(const CMSampleBuffer& sample) {
        const auto* samples = reinterpret_cast<const float*>(sample.audioBuffer()->bytes().data());
        const std::int64_t first = sample.presentationTimeStamp().value;
        if (runs.empty() || runs.back().end != first) {
            runs.push_back({first, {}, first});
        }
        Run& run = runs.back();
        run.end += sample.numSamples();
        if (keepsSamples) {
            run.samples.insert(run.samples.end(), samples, samples + sample.numSamples());
        }
        for (std::int64_t index = 0; index < sample.numSamples(); ++index) {
            findClick(first + index, samples[index]);
        }
    }

    /// The centre of what rises above silence.
    void findClick(std::int64_t frame, float value) {
        if (value > 0.02F) {
            clickWeight_ += value;
            clickMoment_ += value * static_cast<double>(frame);
        } else if (clickWeight_ > 0) {
            clickFrames.push_back(clickMoment_ / clickWeight_);
            clickWeight_ = clickMoment_ = 0;
        }
    }

    static constexpr int clickReach = 8;

    const double rate_;
    const double outputRate_;
    std::minstd_rand random_;
    std::vector<float> block_;
    double clickWeight_ = 0;
    double clickMoment_ = 0;
    FFmpegAudioConverting converting_;

  public:
    SoundAligner aligner;
};

}  // namespace zorvane::testing
