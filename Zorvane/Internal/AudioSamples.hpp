// Makes samples of sound: of silence, and of PCM buffers.
#pragma once

#include <memory>

#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane::audio_samples {

/// Silence of `duration`, in whole frames, cut toward zero: less than one frame gives a sample of none. Throws a
/// `ZVError` when the duration isn't above zero or has more frames than 32 bits count, or when there is no memory for
/// it.
CMSampleBuffer silentAudio(const std::shared_ptr<const CMFormatDescription>& formatDescription, CMTime duration,
                           CMTime presentationTimeStamp);

/// The frames of `buffer`, which is not null, without a copy.
CMSampleBuffer from(std::shared_ptr<const AVAudioPCMBuffer> buffer, CMTime presentationTimeStamp);

}  // namespace zorvane::audio_samples
