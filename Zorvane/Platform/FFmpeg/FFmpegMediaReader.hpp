// Reads what a media file holds with the FFmpeg libraries.
#pragma once

#include "Zorvane/Platform/AVFoundation/AVMediaReading.hpp"

namespace zorvane {

class FFmpegMediaReader final : public AVMediaReading {
  public:
    FFmpegMediaReader();

    ZVMediaInfo read(const std::filesystem::path& url) override;
};

}  // namespace zorvane
