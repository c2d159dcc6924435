#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "Zorvane/Platform/AppKit/NSCursor.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/WaitUntil.hpp"
#include "tests/Support/X11TestClient.hpp"

namespace zorvane {
namespace {

using Type = ZVCursorType;

/// An environment variable with another value, for as long as it lives.
class ScopedVariable {
  public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            before_ = before;
        }
        value ? setenv(name, value, 1) : unsetenv(name);
    }
    ~ScopedVariable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    const char* const name_;
    std::optional<std::string> before_;
};

bool operator==(const NSCursor& a, const NSCursor& b) {
    return a.hotSpot == b.hotSpot && a.size == b.size && *a.tiffRepresentation == *b.tiffRepresentation;
}

class X11CursorTest : public testing::Test {
  protected:
    /// The type of the theme's cursor that is shown; `custom` for another one.
    Type shownType() {
        for (auto type = Type::arrow; type <= Type::contextualMenu;
             type = static_cast<Type>(static_cast<int>(type) + 1)) {
            const auto known = cursors->systemCursor(type);
            if (known && *known == shown()) {
                return type;
            }
        }
        return Type::custom;
    }

    NSCursor shown() { return cursors->currentSystemCursor().value(); }

    const PrivateXServer server;
    const ScopedVariable theme{"XCURSOR_THEME", "Adwaita"};
    const ScopedVariable size{"XCURSOR_SIZE", "24"};
    X11TestClient client;
    const std::shared_ptr<NSCursors> cursors = makeLinuxPlatform().cursors;
};

TEST_F(X11CursorTest, CursorsOfTheThemeAreToldByTheirImages) {
    const struct {
        const char* name;
        Type type;
    } cases[]{
        {"default", Type::arrow},
        {"left_ptr", Type::arrow},
        {"text", Type::iBeam},
        {"crosshair", Type::crosshair},
        {"grabbing", Type::closedHand},
        {"grab", Type::openHand},
        {"pointer", Type::pointingHand},
        {"hand2", Type::pointingHand},
        {"w-resize", Type::resizeLeft},
        {"e-resize", Type::resizeRight},
        {"ew-resize", Type::resizeLeftRight},
        {"n-resize", Type::resizeUp},
        {"s-resize", Type::resizeDown},
        {"ns-resize", Type::resizeUpDown},
        {"vertical-text", Type::iBeamCursorForVerticalLayout},
        {"not-allowed", Type::operationNotAllowed},
        {"alias", Type::dragLink},
        {"copy", Type::dragCopy},
        {"context-menu", Type::contextualMenu},
        {"wait", Type::custom},
    };
    for (const auto& each : cases) {
        client.setThemeCursor(each.name);
        waitUntil([&] { return shownType() == each.type; });
    }
}

TEST_F(X11CursorTest, ACursorOfTheThemeIsKnownInOtherSizesToo) {
    const auto arrow = cursors->systemCursor(Type::arrow).value();
    EXPECT_EQ(arrow.size, (CGSize{24, 24}));
    {
        const ScopedVariable bigger("XCURSOR_SIZE", "48");
        client.setThemeCursor("default");
    }
    waitUntil([&] { return shown() == arrow; });
}

TEST_F(X11CursorTest, GlyphsOfTheServersFontAreToldByTheirShapesWhateverTheirColors) {
    constexpr std::uint16_t leftPointer = 68, secondHand = 60, watch = 150, textBeam = 152;
    const struct {
        std::uint16_t glyph;
        std::uint32_t foreground;
        std::uint32_t background;
        Type type;
    } cases[]{
        {textBeam, 0x000000, 0xFFFFFF, Type::iBeam},          {leftPointer, 0x123456, 0x000000, Type::arrow},
        {textBeam, 0x00FF00, 0x000080, Type::iBeam},          {watch, 0x000000, 0xFFFFFF, Type::custom},
        {secondHand, 0xFFFFFF, 0xFF0000, Type::pointingHand},
    };
    for (const auto& each : cases) {
        client.setFontCursor(each.glyph, each.foreground, each.background);
        waitUntil([&] { return shownType() == each.type; });
    }
}

TEST_F(X11CursorTest, TheServersResourcesChooseThemeAndSizeWhereTheEnvironmentDoesNot) {
    const ScopedVariable noTheme("XCURSOR_THEME", nullptr);
    const ScopedVariable noSize("XCURSOR_SIZE", nullptr);
    client.setText(0, "RESOURCE_MANAGER", "STRING", "Xft.dpi:\t96\nXcursor.theme:\tAdwaita\nXcursor.size:\t48\n");
    EXPECT_EQ(cursors->systemCursor(Type::arrow).value().size, (CGSize{48, 48}));
    client.setText(0, "RESOURCE_MANAGER", "STRING", "Xft.dpi:\t216\nXcursor.theme:\tAdwaita\n");
    EXPECT_EQ(cursors->systemCursor(Type::arrow).value().size, (CGSize{48, 48}));
    client.setText(0, "RESOURCE_MANAGER", "STRING", "Xft.dpi:\t2147483647\nXcursor.theme:\tAdwaita\n");
    EXPECT_EQ(cursors->systemCursor(Type::arrow).value().size, (CGSize{24, 24})) << "nonsense is as good as nothing";
    client.setText(0, "RESOURCE_MANAGER", "STRING", "");
    EXPECT_EQ(cursors->systemCursor(Type::arrow).value().size, (CGSize{24, 24}))
        << "the closest to a 48th of the screen";
    EXPECT_FALSE(cursors->systemCursor(Type::custom));
    EXPECT_FALSE(cursors->systemCursor(Type::disappearingItem));
}

TEST_F(X11CursorTest, AProgramsOwnCursorKeepsItsBytesAndMayBearAThemesName) {
    cursors->systemCursor(Type::arrow);
    client.setSquareCursor(10, 0xFF0000);
    waitUntil([&] { return shown().size == CGSize{10, 10}; });
    const NSCursor red = shown();
    EXPECT_EQ(red.tiffRepresentation->size(), 4U * (2 + 10 * 10));
    client.setSquareCursor(11, 0xFF0000);
    waitUntil([&] { return shown().size == CGSize{11, 11}; });
    client.setSquareCursor(10, 0xFF0000);
    waitUntil([&] { return shown().size == CGSize{10, 10}; });
    EXPECT_TRUE(shown() == red);
    client.setSquareCursor(10, 0x00FF00);
    waitUntil([&] { return !(shown() == red); });
    EXPECT_EQ(shown().size, red.size);
    client.setSquareCursor(12, 0x00FF00, "hand2");
    waitUntil([&] { return shownType() == Type::pointingHand; });
}

TEST_F(X11CursorTest, WithoutAServerThereIsNoCursorUntilItComesBack) {
    PrivateXServer ownServer;
    ASSERT_TRUE(cursors->currentSystemCursor());
    ownServer.kill();
    waitUntil([&] { return !cursors->currentSystemCursor(); });
    EXPECT_FALSE(cursors->systemCursor(Type::arrow));
    ownServer.restart();
    EXPECT_TRUE(cursors->currentSystemCursor());
}

}  // namespace
}  // namespace zorvane
