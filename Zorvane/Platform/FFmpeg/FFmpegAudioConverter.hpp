// Sound of one format into another by libswresample.
#pragma once

#include "Zorvane/Platform/AVFoundation/AVAudioConverter.hpp"

namespace zorvane {

/// Rates are whole numbers of frames per second. An adjustable converter always resamples; a fixed one between equal
/// rates holds nothing back. No level is lowered to make room: what is too loud for whole numbers is cut at their
/// limits, and float goes beyond 1.
class FFmpegAudioConverting final : public AVAudioConverting {
  public:
    std::unique_ptr<AVAudioConverter> makeConverter(const AVAudioFormat& from, const AVAudioFormat& to,
                                                    Rate rate) override;
};

}  // namespace zorvane
