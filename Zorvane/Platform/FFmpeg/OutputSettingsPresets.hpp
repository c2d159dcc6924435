// The encoder settings behind the presets.
#pragma once

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"

namespace zorvane {

/// Settings made for screens: sharp text at constant quality, a still picture that costs next to nothing, and no frame
/// that waits for a later one. `docs/design/encoder-settings.md` has the measurements behind the values.
class PresetSettingsAssistant final : public AVOutputSettingsAssistant {
  public:
    explicit PresetSettingsAssistant(AVOutputSettingsPreset preset) : preset_(preset) {}

    /// The settings depend on nothing but the source's size, which becomes the video's unless the preset is smaller.
    void setSourceVideoFormat(const CMFormatDescription& format) override;

    /// Without it, sound is stereo at 48 kHz.
    void setSourceAudioFormat(const CMFormatDescription& format) override;

    std::optional<AVAudioSettings> audioSettings() const override;
    std::optional<AVVideoSettings> videoSettings() const override;

  private:
    const AVOutputSettingsPreset preset_;
    std::optional<CMVideoDimensions> sourcePicture_;
    std::optional<AVAudioFormat> sourceSound_;
};

}  // namespace zorvane
