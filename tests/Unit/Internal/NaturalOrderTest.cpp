#include "Zorvane/Internal/NaturalOrder.hpp"

#include <gtest/gtest.h>

namespace zorvane {
namespace {

TEST(NaturalOrder, SortsNamesAsPeopleDo) {
    const std::string_view ascending[] = {
        "",
        " a",
        "2",
        "2b",
        "10",
        "100000000000000000000000000",
        "App",
        "app 2",
        "APP 010",
        "app 10b",
        "app 11",
        "Apple",
        "zebra",
        "\xC3\xA9"
        "clair",
    };
    for (std::size_t a = 0; a < std::size(ascending); ++a) {
        for (std::size_t b = 0; b < std::size(ascending); ++b) {
            EXPECT_EQ(naturalOrder(ascending[a], ascending[b]), static_cast<std::weak_ordering>(a <=> b))
                << ascending[a] << " against " << ascending[b];
        }
    }
}

TEST(NaturalOrder, CaseAndLeadingZerosDoNotCount) {
    for (const auto& [a, b] : {std::pair("Finder", "fINDER"), std::pair("v007", "V7"), std::pair("0", "000")}) {
        EXPECT_EQ(naturalOrder(a, b), std::weak_ordering::equivalent) << a << " against " << b;
    }
}

}  // namespace
}  // namespace zorvane
