// Brings captured pictures into the form that the encoder takes.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"
#include "Zorvane/Platform/FFmpeg/ColorConversion.hpp"

namespace zorvane {

/// Converts colours and scales, into one destination that keeps its content from picture to picture. A picture of
/// another shape than the video's keeps its own, with black around it. A picture that is there already costs nothing.
/// Used by one thread at a time; allocates only when pictures change their size or format, but for the rows that the
/// library takes while it scales.
class PicturePreparer {
  public:
    /// `destination` has the size that the encoder codes, `width` and `height` are those of the picture to be seen.
    /// What the former has more is filled with the picture's last column and row. Without `colors` the video has those
    /// of '420v', and a bit depth of 8.
    PicturePreparer(const PlanarPicture& destination, std::int32_t width, std::int32_t height,
                    const std::optional<AVVideoColorProperties>& colors);

    /// Throws `NSError` for a picture whose colours are not the video's and can't be converted: '420v' goes into videos
    /// without colours of their own, all else into those with.
    void prepare(const CVPixelBufferRef& picture);

  private:
    /// Three planes for a picture that is yet to be scaled.
    class Planes {
      public:
        Planes(std::int32_t width, std::int32_t height, std::int32_t bitDepth);
        const PlanarPicture& picture() const { return picture_; }

      private:
        std::vector<std::byte> memory_;
        PlanarPicture picture_;
    };

    void setUpFor(const CVPixelLayout& layout);
    void setUpConverter(const CVPixelLayout& layout);
    void fillBlack() const;
    void convert(const CVPixelBuffer& picture);
    void unpack(const CVPixelBuffer& picture);
    void fillBorder() const;

    const PlanarPicture coded_;
    const PlanarPicture visible_;  // the same memory
    const std::optional<AVVideoColorProperties> colors_;
    std::optional<CVPixelLayout> layout_;
    PlanarPicture place_;  // where in the visible memory pictures of this layout stand
    std::optional<ColorConverter> converter_;
    std::optional<Planes> unscaled_;  // only where pictures have another size than their place
    // Kept, so that its memory isn't taken for a new picture, which could then not be told from this one.
    CVPixelBufferRef last_;
};

}  // namespace zorvane
