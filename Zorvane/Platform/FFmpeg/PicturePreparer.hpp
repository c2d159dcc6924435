// Brings captured pictures into the form that the encoder takes.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"
#include "Zorvane/Platform/FFmpeg/ColorConversion.hpp"

namespace zorvane {

/// Converts colours and scales, into one destination that keeps its content from picture to picture. A picture that is
/// there already costs nothing. Used by one thread at a time; allocates only when pictures change their size or format.
class PicturePreparer {
  public:
    /// `destination` has the size that the encoder codes, `width` and `height` are those of the picture to be seen.
    /// What the former has more is filled with the picture's last column and row.
    PicturePreparer(const PlanarPicture& destination, std::int32_t width, std::int32_t height,
                    AVVideoColorPrimaries primaries);

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
    void scale(const PlanarPicture& source) const;
    void fillBorder() const;

    const PlanarPicture coded_;
    const PlanarPicture visible_;  // the same memory
    const AVVideoColorPrimaries primaries_;
    std::optional<CVPixelLayout> layout_;
    std::optional<ColorConverter> converter_;
    std::optional<Planes> unscaled_;  // only where pictures have another size than the video
    // Kept, so that its memory isn't taken for a new picture, which could then not be told from this one.
    CVPixelBufferRef last_;
};

}  // namespace zorvane
