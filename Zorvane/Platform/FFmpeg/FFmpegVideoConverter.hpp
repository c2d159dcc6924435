// Pictures of cameras into '420v' by libyuv and the JPEG decoder of the FFmpeg libraries.
#pragma once

#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"

namespace zorvane {

/// Converts every format, at any size of 1 to 16384 pixels each way.
class FFmpegVideoConverting final : public AVVideoConverting {
  public:
    std::unique_ptr<AVVideoConverter> makeConverter(AVVideoSourceFormat format, CMVideoDimensions size) override;
};

}  // namespace zorvane
