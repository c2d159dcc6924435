// The settings of a track in the terms of the encoders.
#pragma once

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"
#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"

struct AVCodecContext;
struct AVDictionary;

namespace zorvane {

/// Fills in what all encoders share: size, pixel format, colours, time.
void applyVideoSettings(const AVVideoSettings& settings, AVCodecContext& context);

/// What only the encoder of this name knows; of a name that isn't known, nothing. The caller frees the dictionary.
AVDictionary* makeEncoderOptions(const AVVideoSettings& settings, const AVCodecContext& context);

/// The rate of AAC nearest to this one; 48000 if it is above all of them.
double nearestAudioRate(double sampleRate);

/// What the encoder of these settings takes: 32-bit floats at a rate that it has, two channels unless told otherwise.
AVAudioFormat encodedFormat(const AVAudioSettings& settings);

void applyAudioSettings(const AVAudioSettings& settings, AVCodecContext& context);

}  // namespace zorvane
