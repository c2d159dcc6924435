// Makes sound for tests.
#pragma once

#include <cstdint>
#include <functional>

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane::testing {

/// From -1 to 1.
using SoundLevel = std::function<double(std::uint32_t frame, std::uint32_t channel)>;

inline constexpr AVAudioFormat stereo48{AVAudioCommonFormat::float32, 48000, 2};

/// A block of `frames` frames from `time` on.
CMSampleBuffer soundAt(CMTime time, const AVAudioFormat& format, std::uint32_t frames, const SoundLevel& level);

/// A level that is 0 but for a click of one frame, on all channels.
SoundLevel clickAt(std::uint32_t frame);

/// A constant level.
SoundLevel steady(double level);

}  // namespace zorvane::testing
