#include "Zorvane/Platform/Virtual/VirtualMediaWriting.hpp"

#include <utility>

#include "Zorvane/Platform/Virtual/VirtualAssetWriter.hpp"

namespace zorvane {
namespace {

class VirtualOutputSettingsAssistant final : public AVOutputSettingsAssistant {
  public:
    VirtualOutputSettingsAssistant(AVOutputSettingsPreset preset, VirtualWritingConditions conditions)
        : preset_(preset), conditions_(std::move(conditions)) {}

    void setSourceVideoFormat(const CMFormatDescription&) override {}
    void setSourceAudioFormat(const CMFormatDescription& format) override { sourceSound_ = format.audioFormat; }

    std::optional<AVAudioSettings> audioSettings() const override {
        if (!conditions_.hasAudioSettings) {
            return std::nullopt;
        }
        AVAudioSettings settings;
        settings.numberOfChannels = conditions_.audioChannels;
        if (sourceSound_) {
            settings.sampleRate = sourceSound_->sampleRate;
        }
        if (sourceSound_ && conditions_.audioChannels) {
            settings.numberOfChannels = static_cast<std::int32_t>(sourceSound_->channelCount);
        }
        return settings;
    }

    std::optional<AVVideoSettings> videoSettings() const override {
        if (!conditions_.hasVideoSettings) {
            return std::nullopt;
        }
        const bool isHEVC = preset_ == AVOutputSettingsPreset::hevc_7680x4320;
        AVVideoSettings settings;
        settings.codec = isHEVC ? CMVideoCodecType::hevc : CMVideoCodecType::h264;
        const CMVideoDimensions size = dimensions();
        settings.width = size.width;
        settings.height = size.height;
        return settings;
    }

  private:
    CMVideoDimensions dimensions() const {
        switch (preset_) {
            case AVOutputSettingsPreset::h264_1920x1080:
                return {1920, 1080};
            case AVOutputSettingsPreset::h264_3840x2160:
                return {3840, 2160};
            case AVOutputSettingsPreset::hevc_7680x4320:
                return {7680, 4320};
        }
        return {};
    }

    const AVOutputSettingsPreset preset_;
    const VirtualWritingConditions conditions_;
    std::optional<AVAudioFormat> sourceSound_;
};

}  // namespace

std::shared_ptr<VirtualMediaWriting> VirtualMediaWriting::make(std::shared_ptr<HostClock> clock,
                                                               VirtualWritingConditions conditions) {
    return std::shared_ptr<VirtualMediaWriting>(new VirtualMediaWriting(std::move(clock), std::move(conditions)));
}

VirtualMediaWriting::VirtualMediaWriting(std::shared_ptr<HostClock> clock, VirtualWritingConditions conditions)
    : clock_(std::move(clock)), conditions_(std::move(conditions)) {}

void VirtualMediaWriting::setConditions(VirtualWritingConditions conditions) {
    MutexLock lock(mutex_);
    conditions_ = std::move(conditions);
}

VirtualWritingConditions VirtualMediaWriting::conditions() const {
    MutexLock lock(mutex_);
    return conditions_;
}

std::unique_ptr<AVOutputSettingsAssistant> VirtualMediaWriting::makeOutputSettingsAssistant(
    AVOutputSettingsPreset preset) {
    VirtualWritingConditions conditions = this->conditions();
    if (!conditions.hasAssistant) {
        return nullptr;
    }
    return std::make_unique<VirtualOutputSettingsAssistant>(preset, std::move(conditions));
}

std::shared_ptr<AVAssetWriter> VirtualMediaWriting::makeAssetWriter(const std::filesystem::path& url, AVFileType) {
    return makeWriter(url);
}

std::shared_ptr<AVAssetWriter> VirtualMediaWriting::makeSegmentWriter(AVAssetSegmenting segmenting) {
    return makeWriter(std::move(segmenting));
}

template <class Output>
std::shared_ptr<AVAssetWriter> VirtualMediaWriting::makeWriter(Output output) {
    MutexLock lock(mutex_);
    if (conditions_.makeError) {
        std::rethrow_exception(conditions_.makeError);
    }
    writers_.push_back(VirtualAssetWriter::make(clock_, conditions_, std::move(output)));
    return writers_.back();
}

std::vector<std::shared_ptr<VirtualAssetWriter>> VirtualMediaWriting::writers() const {
    MutexLock lock(mutex_);
    return writers_;
}

}  // namespace zorvane
