// How a picture of one shape is shown in a video of another.
#pragma once

#include <cstdint>

#include "Zorvane/Platform/CoreMedia/CMFormatDescription.hpp"

namespace zorvane {

/// Where in a video the picture stands; around it the video is black. The corner is at even numbers, where
/// chroma samples begin.
struct PicturePlace {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool operator==(const PicturePlace&) const = default;
};

/// The largest size inside `limit` that has the shape of `size`. A length that isn't that of the limit is even.
CMVideoDimensions largestSizeInside(CMVideoDimensions limit, CMVideoDimensions size);

/// The whole video for a picture of its shape, to which lengths that were rounded to even ones count; else the middle
/// of it, with the picture's shape. All lengths are positive.
PicturePlace placeOfPicture(CMVideoDimensions picture, CMVideoDimensions video);

}  // namespace zorvane
