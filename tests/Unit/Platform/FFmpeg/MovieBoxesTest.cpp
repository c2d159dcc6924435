#include "Zorvane/Platform/FFmpeg/MovieBoxes.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/Support/MovieReader.hpp"

namespace zorvane::testing {
namespace {

std::vector<std::byte> bytesOf(const std::vector<int>& values) {
    std::vector<std::byte> bytes;
    for (const int value : values) {
        bytes.push_back(static_cast<std::byte>(value));
    }
    return bytes;
}

TEST(MovieBoxesTest, MediaHasASmallHeaderWhereOneWillDo) {
    constexpr std::uint64_t largest = 0xffffffff;
    EXPECT_EQ(movieBoxes(mediaDataHeader(16)), "free mdat");
    const ReservedSpace small = mediaDataHeader(largest + 8);
    EXPECT_EQ(std::vector(small.begin(), small.end()),
              bytesOf({0, 0, 0, 8, 'f', 'r', 'e', 'e', 255, 255, 255, 255, 'm', 'd', 'a', 't'}));
    const ReservedSpace large = mediaDataHeader(largest + 9);
    EXPECT_EQ(std::vector(large.begin(), large.end()),
              bytesOf({0, 0, 0, 1, 'm', 'd', 'a', 't', 0, 0, 0, 1, 0, 0, 0, 8}));
}

TEST(MovieBoxesTest, FindsWhereATracksMediaBegins) {
    const auto track = [](int number, int offset) {
        return std::vector<int>{0, 0, 0, 52,     't', 'r', 'a', 'f',                               //
                                0, 0, 0, 16,     't', 'f', 'h', 'd', 0, 2, 0, 0, 0, 0, 0, number,  //
                                0, 0, 0, 28,     't', 'r', 'u', 'n', 0, 0, 2, 1, 0, 0, 0, 1,
                                0, 0, 1, offset, 0,   0,   0,   9,   0, 0, 0, 9};
    };
    std::vector<int> fragment{0, 0, 0, 112, 'm', 'o', 'o', 'f'};
    for (const auto& part : {track(1, 20), track(3, 30)}) {
        fragment.insert(fragment.end(), part.begin(), part.end());
    }
    const std::vector<std::byte> bytes = bytesOf(fragment);
    EXPECT_EQ(findTrackMedia(bytes, 1), 256U + 20);
    EXPECT_EQ(findTrackMedia(bytes, 2), std::nullopt);
    EXPECT_EQ(findTrackMedia(bytes, 3), 256U + 30);
}

}  // namespace
}  // namespace zorvane::testing
