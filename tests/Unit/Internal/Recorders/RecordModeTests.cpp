#include "Zorvane/Internal/Recorders/RecordMode.hpp"

#include <gtest/gtest.h>

namespace zorvane {
namespace {

struct SizeCase {
    const char* description;
    CGSize source;
    int scaleFactor;
    RecordMode mode;
    CMVideoDimensions expected;
};

TEST(RecordMode, EncodesTheSourceSizeUpToTheModesLimit) {
    const SizeCase cases[] = {
        {"larger than the limit of sRGB", {5120, 2880}, 1, RecordMode::sRGB, {4096, 2304}},
        {"within the limit of displayP3", {5120, 2880}, 1, RecordMode::displayP3, {5120, 2880}},
        {"points of a scaled display", {2560, 1440}, 2, RecordMode::sRGB, {4096, 2304}},
        {"exactly the limit", {4096, 2304}, 1, RecordMode::sRGB, {4096, 2304}},
        {"wider than the limit's aspect ratio", {8192, 1000}, 1, RecordMode::sRGB, {4096, 500}},
        {"higher than the limit's aspect ratio", {1000, 4608}, 1, RecordMode::sRGB, {500, 2304}},
        {"beyond both limits", {8000, 5000}, 1, RecordMode::sRGB, {3686, 2304}},
        {"beyond the limit of displayP3", {8000, 5000}, 1, RecordMode::displayP3, {6912, 4320}},
        {"fractions of a point are cut after scaling", {1000.5, 600.5}, 2, RecordMode::sRGB, {2001, 1201}},
        {"odd sides stay odd", {1001, 601}, 1, RecordMode::sRGB, {1001, 601}},
    };
    for (const SizeCase& expectation : cases) {
        EXPECT_EQ(downsizedVideoSize(expectation.source, expectation.scaleFactor, expectation.mode),
                  expectation.expected)
            << expectation.description;
    }
}

TEST(RecordMode, OnlyThePrimariesOfTheFilesColoursDifferBetweenModes) {
    const AVVideoColorProperties narrow = videoColorProperties(RecordMode::sRGB);
    AVVideoColorProperties wide = videoColorProperties(RecordMode::displayP3);
    EXPECT_EQ(narrow.primaries, AVVideoColorPrimaries::ituR709_2);
    EXPECT_EQ(wide.primaries, AVVideoColorPrimaries::p3D65);
    wide.primaries = narrow.primaries;
    EXPECT_EQ(wide, narrow);
}

}  // namespace
}  // namespace zorvane
