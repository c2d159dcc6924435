// The encoder settings behind the presets.
#pragma once

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"

namespace zorvane {

/// Settings made for screens: sharp text at constant quality, a still picture that costs next to nothing, and no frame
/// that waits for a later one. Cameras have settings for noise: less of it, and a bound to what it may take.
/// `docs/design/encoder-settings.md` has the measurements behind the values.
class PresetSettingsAssistant final : public AVOutputSettingsAssistant {
  public:
    explicit PresetSettingsAssistant(AVOutputSettingsPreset preset) : preset_(preset) {}

    /// The source's size becomes the video's; one beyond the preset's becomes the largest of its shape inside that. A
    /// source without a codec is a camera.
    void setSourceVideoFormat(const CMFormatDescription& format) override;

    /// Without it, a camera is taken to give 30 pictures a second.
    void setSourceVideoMinFrameDuration(CMTime duration) override { minFrameDuration_ = duration; }

    /// Without it, sound is stereo at 48 kHz.
    void setSourceAudioFormat(const CMFormatDescription& format) override;

    std::optional<AVAudioSettings> audioSettings() const override;
    std::optional<AVVideoSettings> videoSettings() const override;

  private:
    const AVOutputSettingsPreset preset_;
    std::optional<CMFormatDescription> sourceVideo_;
    CMTime minFrameDuration_ = kCMTimeInvalid;
    std::optional<AVAudioFormat> sourceSound_;
};

}  // namespace zorvane
