#include <gtest/gtest.h>

#include "Zorvane/Platform/Linux/X11/DisplaySerials.hpp"
#include "Zorvane/Platform/Linux/X11/EDID.hpp"
#include "tests/Support/EDIDBuilder.hpp"

namespace zorvane {
namespace {

TEST(EDID, TellsMakerModelSerialNumberAndName) {
    const auto edid = EDID::parse(makeEDID(0x12345678, "DELL U2720Q"));
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->vendorNumber, 0x10ACU);
    EXPECT_EQ(edid->modelNumber, 0x1234U);
    EXPECT_EQ(edid->serialNumber, 0x12345678U);
    EXPECT_EQ(edid->name, "DELL U2720Q");
}

TEST(EDID, TextsAreCutAndCleaned) {
    EXPECT_EQ(EDID::parse(makeEDID(1, "THIRTEEN CHAR"))->name, "THIRTEEN CHAR") << "no line feed fits";
    EXPECT_EQ(EDID::parse(makeEDID(1, "tab\tinside"))->name, "tab?inside");
    EXPECT_EQ(EDID::parse(makeEDID(1, "   "))->name, std::nullopt);
    EXPECT_EQ(EDID::parse(makeEDID(1, ""))->name, std::nullopt);
}

TEST(EDID, DamagedBlocksAreNotRead) {
    auto block = makeEDID(1, "Panel");
    EXPECT_FALSE(EDID::parse({}));
    EXPECT_FALSE(EDID::parse(std::span(block).first(127)));
    block[20] ^= 1;
    EXPECT_FALSE(EDID::parse(block)) << "the sum is wrong";
    EXPECT_FALSE(EDID::parse(std::vector<std::uint8_t>(128))) << "the sum is right, the header isn't";
}

TEST(DisplaySerialNumbers, APanelsOwnNumberCounts) {
    EXPECT_EQ(displaySerialNumbers({{"DP-1", makeEDID(11, "A")}, {"DP-2", makeEDID(12, "A")}}),
              (std::vector<std::uint32_t>{11, 12}));
    EXPECT_EQ(displaySerialNumbers({{"DP-7", makeEDID(11, "A")}}).at(0), 11U) << "on whichever connector";
}

TEST(DisplaySerialNumbers, PanelsThatShareANumberOrHaveNoneAreToldApartByTheirConnectors) {
    const auto twins = displaySerialNumbers({{"DP-1", makeEDID(11, "A")}, {"DP-2", makeEDID(11, "A")}});
    const auto swapped = displaySerialNumbers({{"DP-2", makeEDID(11, "A")}, {"DP-1", makeEDID(11, "A")}});
    EXPECT_NE(twins[0], twins[1]);
    EXPECT_EQ(twins[0], swapped[1]) << "the order of the list doesn't matter";
    EXPECT_EQ(twins[1], swapped[0]);

    const auto unnumbered = displaySerialNumbers({{"DP-1", makeEDID(0, "A")}, {"DP-2", {}}, {"", {}}});
    EXPECT_EQ(std::count(unnumbered.begin(), unnumbered.end(), 0U), 0);
    EXPECT_NE(unnumbered[0], unnumbered[1]);
}

TEST(DisplaySerialNumbers, NumbersThatClashMoveApart) {
    const auto derived = displaySerialNumbers({{"DP-1", {}}}).at(0);
    const auto both = displaySerialNumbers({{"DP-1", {}}, {"DP-2", makeEDID(derived, "A")}});
    EXPECT_EQ(both, (std::vector<std::uint32_t>{derived + 1, derived}));
    const auto same = displaySerialNumbers({{"DP-1", {}}, {"DP-1", {}}});
    EXPECT_NE(same[0], same[1]);
}

TEST(DisplayNumbering, ATwinThatComesAndGoesChangesNoNumber) {
    DisplayNumbering numbering;
    const DisplayIdentity one{"DP-1", makeEDID(11, "A")};
    const DisplayIdentity two{"DP-2", makeEDID(11, "A")};
    EXPECT_EQ(numbering.assign({one}).at(0), 11U);
    const auto both = numbering.assign({two, one});
    EXPECT_EQ(both[1], 11U);
    EXPECT_NE(both[0], 11U);
    EXPECT_EQ(numbering.assign({two}).at(0), both[0]);
    EXPECT_EQ(numbering.assign({one, two}), (std::vector<std::uint32_t>{11, both[0]}));
}

TEST(DisplayNumbering, APanelKeepsItsNumberOnAnotherConnector) {
    DisplayNumbering numbering;
    const DisplayIdentity before{"DP-1", makeEDID(11, "A")};
    const DisplayIdentity after{"DP-2", makeEDID(11, "A")};
    numbering.assign({before});
    EXPECT_EQ(numbering.assign({after}).at(0), 11U);
    const auto withTwin = numbering.assign({before, after});
    EXPECT_EQ(withTwin[1], 11U) << "who is there keeps the number, whoever had it before";
    EXPECT_NE(withTwin[0], 11U);
}

}  // namespace
}  // namespace zorvane
