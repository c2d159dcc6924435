#include "Zorvane/Platform/FFmpeg/PictureFit.hpp"

#include <algorithm>
#include <cstdlib>

namespace zorvane {
namespace {

std::int64_t area(std::int32_t width, std::int32_t height) {
    return std::int64_t{width} * height;
}

/// The even number nearest to `numerator / denominator`, at least 2 unless the limit is less.
std::int32_t evenQuotient(std::int64_t numerator, std::int64_t denominator, std::int32_t limit) {
    const std::int64_t nearest = (numerator + denominator) / (2 * denominator) * 2;
    return static_cast<std::int32_t>(std::min<std::int64_t>(std::max<std::int64_t>(nearest, 2), limit));
}

/// With each length off by no more than one.
bool isOfOneShape(CMVideoDimensions one, CMVideoDimensions other) {
    const std::int64_t difference = area(one.width, other.height) - area(one.height, other.width);
    return std::abs(difference) <= std::int64_t{one.width} + one.height + other.width + other.height;
}

}  // namespace

CMVideoDimensions largestSizeInside(CMVideoDimensions limit, CMVideoDimensions size) {
    if (area(size.width, limit.height) >= area(size.height, limit.width)) {
        return {limit.width, evenQuotient(area(size.height, limit.width), size.width, limit.height)};
    }
    return {evenQuotient(area(size.width, limit.height), size.height, limit.width), limit.height};
}

PicturePlace placeOfPicture(CMVideoDimensions picture, CMVideoDimensions video) {
    if (isOfOneShape(picture, video)) {
        return {0, 0, video.width, video.height};
    }
    const CMVideoDimensions size = largestSizeInside(video, picture);
    return {(video.width - size.width) / 4 * 2, (video.height - size.height) / 4 * 2, size.width, size.height};
}

}  // namespace zorvane
