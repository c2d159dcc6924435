#include "Zorvane/Platform/Linux/X11/Veil.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace zorvane {
namespace {

bool covers(const Veil& veil, std::int32_t x, std::int32_t y) {
    return std::any_of(veil.parts().begin(), veil.parts().end(), [&](const PixelRect& part) {
        return part.contains({x, y, 1, 1});
    });
}

TEST(Veil, IsLiftedExactlyWhereAWindowIsPainted) {
    Veil veil;
    veil.lay({0, 0, 10, 10});
    veil.lay({5, 5, 10, 10});
    veil.lift({3, 3, 4, 4});
    veil.lift({100, 100, 4, 4});
    for (std::int32_t y = 0; y < 16; ++y) {
        for (std::int32_t x = 0; x < 16; ++x) {
            const bool wasVeiled = (x < 10 && y < 10) || (x >= 5 && x < 15 && y >= 5 && y < 15);
            const bool wasPainted = x >= 3 && x < 7 && y >= 3 && y < 7;
            EXPECT_EQ(covers(veil, x, y), wasVeiled && !wasPainted) << x << ", " << y;
        }
    }
    EXPECT_EQ(veil.extent(), (PixelRect{0, 0, 15, 15}));
    veil.lift({-5, -5, 100, 100});
    EXPECT_TRUE(veil.isEmpty());
}

TEST(Veil, OfTooManyPartsStaysUntilALargePartIsPainted) {
    Veil veil;
    veil.lay({0, 0, 2000, 2});
    for (std::int32_t x = 0; x < 2000; x += 2) {
        veil.lift({x, 0, 1, 1});
    }
    EXPECT_LE(veil.parts().size(), 300U);
    EXPECT_TRUE(covers(veil, 1999, 1));
    veil.lift({0, 0, 2000, 2});
    EXPECT_TRUE(veil.isEmpty());
}

}  // namespace
}  // namespace zorvane
