#include "Zorvane/Platform/FFmpeg/PictureFit.hpp"

#include <gtest/gtest.h>

namespace zorvane::testing {
namespace {

TEST(PictureFitTest, PictureOfAnotherShapeIsInTheMiddleAndOneOfTheSameFillsTheVideo) {
    struct Case {
        CMVideoDimensions picture;
        CMVideoDimensions video;
        PicturePlace place;
    };
    for (const Case& test : {
             Case{{640, 480}, {640, 480}, {0, 0, 640, 480}},
             Case{{2560, 1440}, {1920, 1080}, {0, 0, 1920, 1080}},
             Case{{1366, 768}, {1920, 1080}, {0, 0, 1920, 1080}},  // 16:9 as near as a multiple of two gets
             Case{{1171, 2533}, {1170, 2532}, {0, 0, 1170, 2532}},
             Case{{97, 65}, {96, 64}, {0, 0, 96, 64}},
             Case{{2532, 1170}, {1170, 2532}, {0, 996, 1170, 540}},  // turned
             Case{{1080, 1920}, {1920, 1080}, {656, 0, 608, 1080}},
             Case{{640, 480}, {1920, 1080}, {240, 0, 1440, 1080}},
             Case{{640, 480}, {97, 33}, {26, 0, 44, 33}},
             Case{{1, 4000}, {64, 48}, {30, 0, 2, 48}},  // never nothing
             Case{{4000, 1}, {1, 1}, {0, 0, 1, 1}},
         }) {
        const PicturePlace place = placeOfPicture(test.picture, test.video);
        EXPECT_EQ(place, test.place) << test.picture.width << " x " << test.picture.height << " in " << test.video.width
                                     << " x " << test.video.height << ": " << place.width << " x " << place.height
                                     << " at " << place.x << ", " << place.y;
    }
}

}  // namespace
}  // namespace zorvane::testing
