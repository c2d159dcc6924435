// Pictures that lie in a device's memory sample by sample.
#pragma once

#include <cstdint>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"

namespace zorvane {

/// Rearranges samples, and converts colours of red, green and blue with the matrix of ITU-R BT.601. Luma and chroma are
/// taken to be of video range, which devices give unless they say otherwise; grey alone uses all levels.
class RawVideoConverter final : public AVVideoConverter {
  public:
    /// Of every format but JPEG. Both lengths are positive.
    RawVideoConverter(AVVideoSourceFormat format, CMVideoDimensions size);

    void convert(const AVVideoSourcePicture& from, CVPixelBuffer& to) override;

  private:
    void requireWhole(const AVVideoSourcePicture& picture) const;
    void convertPacked(const AVVideoSourcePicture& from, CVPixelBuffer& to);

    const AVVideoSourceFormat format_;
    const CMVideoDimensions size_;
    // For packed formats, which are converted two rows at a time.
    std::vector<std::uint8_t> pixels_;
    std::vector<std::uint8_t> cb_;
    std::vector<std::uint8_t> cr_;
};

}  // namespace zorvane
