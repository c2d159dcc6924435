#include "Zorvane/Internal/ShortID.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <string>

namespace zorvane {
namespace {

TEST(ShortID, DrawsFiveLettersOrDigitsEvenly) {
    constexpr int count = 20'000;
    std::map<char, int> occurrences;
    for (int round = 0; round < count; ++round) {
        const std::string id = ShortID::make();
        ASSERT_EQ(id.size(), 5U);
        for (const char character : id) {
            ++occurrences[character];
        }
    }
    ASSERT_EQ(occurrences.size(), 62U);
    // A plain modulo would favour the first eight letters by a quarter. The bounds are seven standard deviations wide.
    constexpr double expected = count * 5 / 62.0;
    for (const auto& [character, number] : occurrences) {
        EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(character))) << character;
        EXPECT_NEAR(number, expected, 280) << character;
    }
}

}  // namespace
}  // namespace zorvane
