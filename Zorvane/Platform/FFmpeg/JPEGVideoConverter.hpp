// Pictures that come as JPEG files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"

namespace zorvane {

struct BiPlanarPicture;

/// Decodes them with the FFmpeg libraries on the calling thread; files without tables of their own, as of many cameras,
/// have the usual ones. Chroma may be of half the size, of half the width, of all of it, or absent. Once a picture of
/// usual size has come, only the decoder allocates: a few handles of pooled memory for each picture.
class JPEGVideoConverter final : public AVVideoConverter {
  public:
    /// Throws `NSError` when there is no decoder.
    explicit JPEGVideoConverter(CMVideoDimensions size);

    void convert(const AVVideoSourcePicture& from, CVPixelBuffer& to) override;

  private:
    void requireEnd(std::span<const std::byte> file);
    void load(std::span<const std::byte> file);
    void decode();
    void requireSize() const;
    void store(const BiPlanarPicture& to);

    const CMVideoDimensions size_;
    const FFmpegHandle<AVCodecContext> context_;
    const FFmpegHandle<AVPacket> packet_;
    const FFmpegHandle<AVFrame> frame_;
    bool filesHaveEnd_ = false;  // as far as is known: whether the marker of the end is in this device's files
    // A row of chroma, where it has to be made smaller first.
    std::vector<std::uint8_t> cb_;
    std::vector<std::uint8_t> cr_;
};

}  // namespace zorvane
