#include "Zorvane/Platform/Linux/X11/Cursor/CursorTheme.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "Zorvane/Platform/Linux/X11/Cursor/CursorNames.hpp"

namespace zorvane {
namespace {

TEST(CursorTheme, ResourcesAreFoundByTheirWholeName) {
    constexpr std::string_view database = "*Xcursor.size:\t1\nXcursor.sizes: 2\n Xcursor.size :  48 \r\nXft.dpi:96";
    EXPECT_EQ(findResource(database, "Xft.dpi"), "96");
    EXPECT_EQ(findResource(database, "Xcursor.theme"), std::nullopt);
    EXPECT_TRUE(findResource(database, "Xcursor.size").value_or("").starts_with("48"));
    EXPECT_EQ(findResource("Xcursor.theme:", "Xcursor.theme"), "");
    EXPECT_EQ(findResource("", "Xft.dpi"), std::nullopt);
}

TEST(CursorNames, NoNameStandsForTwoTypes) {
    std::set<ZVCursorType> types;
    std::set<std::string_view> names;
    for (const CursorNames& each : allCursorNames()) {
        types.insert(each.type);
        for (const char* name : each.names) {
            EXPECT_TRUE(names.insert(name).second) << name;
            EXPECT_EQ(cursorTypeNamed(name), each.type);
        }
    }
    EXPECT_EQ(types.size(), 17U);
    EXPECT_EQ(cursorTypeNamed("watch"), std::nullopt);
}

}  // namespace
}  // namespace zorvane
