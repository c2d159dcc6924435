// The settings of a track in the terms of the encoders.
#pragma once

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"

struct AVCodecContext;
struct AVDictionary;

namespace zorvane {

/// Fills in what all encoders share: size, pixel format, colours, time.
void applyVideoSettings(const AVVideoSettings& settings, AVCodecContext& context);

/// What only the encoder of this name knows; of a name that isn't known, nothing. The caller frees the dictionary.
AVDictionary* makeEncoderOptions(const AVVideoSettings& settings, const AVCodecContext& context);

}  // namespace zorvane
