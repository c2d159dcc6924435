#include "Zorvane/Platform/Linux/X11/Input/Keyboard.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon.h>

#include <ostream>
#include <string_view>

namespace zorvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = DeviceEvent::Kind;
using Text = std::optional<std::string>;

// Keys by the numbers they have on a PC, and states.
constexpr std::uint8_t tab = 23, q = 24, e = 26, z = 29, enter = 36, leftControl = 37, a = 38, circumflex = 49;
constexpr std::uint8_t leftShift = 50, rightShift = 62, leftAlt = 64, space = 65, capsLock = 66, f5 = 71, numLock = 77;
constexpr std::uint8_t pad4 = 83, padEnter = 104, altGr = 108, left = 113, pause = 127, leftSuper = 133;
constexpr std::uint16_t mod5 = 1U << 7, secondGroup = 1U << 13, leftButton = 1U << 8;

std::unique_ptr<KeyboardLayout> layout(const char* names, const char* options = "") {
    const auto context = makeXkbContext();
    const xkb_rule_names rules{"evdev", "pc105", names, "", options};
    return std::make_unique<KeyboardLayout>(
        XkbHandle<xkb_keymap>(xkb_keymap_new_from_names(context.get(), &rules, XKB_KEYMAP_COMPILE_NO_FLAGS)));
}

KeyComposer composer() {
    constexpr std::string_view rules = "<dead_circumflex> <e> : \"ê\"\n<Multi_key> <a> <e> : \"æ\"\n";
    const auto context = makeXkbContext();
    return KeyComposer(XkbHandle<xkb_compose_table>(xkb_compose_table_new_from_buffer(
        context.get(), rules.data(), rules.size(), "C", XKB_COMPOSE_FORMAT_TEXT_V1, XKB_COMPOSE_COMPILE_NO_FLAGS)));
}

Keyboard keyboard(const char* names, const char* options = "", const std::vector<std::uint8_t>& held = {}) {
    return {layout(names, options), composer(), held};
}

DeviceEvent press(std::uint8_t key, std::uint16_t state = 0, std::uint32_t time = 0) {
    return {.kind = Kind::keyPress, .detail = key, .time = time, .state = state};
}

DeviceEvent release(std::uint8_t key, std::uint16_t state = 0) {
    return {.kind = Kind::keyRelease, .detail = key, .state = state};
}

struct KeyCase {
    const char* layouts;
    DeviceEvent event;
    std::int64_t code;
    Text characters;
    Text charactersIgnoringModifiers;
};

TEST(KeyboardTest, KeysHaveTheCodesAndTheTextOfTheLayoutInForce) {
    constexpr std::int64_t sign = 256;
    const std::vector<KeyCase> cases{
        {"us", press(a), sign + a, "a", "a"},
        {"us", press(a, XModifiers::shift), sign + a, "A", "A"},
        {"us", press(a, XModifiers::lock), sign + a, "A", "a"},
        {"us", press(a, XModifiers::control), sign + a, "\x01", "a"},
        {"us", press(a, XModifiers::mod1 | leftButton), sign + a, "a", "a"},
        {"us", release(a, XModifiers::shift), sign + a, "A", "A"},
        {"de", press(z), sign + z, "z", "z"},
        {"de", press(q, mod5), sign + q, "@", "q"},
        {"de", press(circumflex), sign + circumflex, "", "^"},
        {"de", release(circumflex), sign + circumflex, "", "^"},
        {"us,ru", press(a, secondGroup), sign + a, "ф", "ф"},
        {"us,ru", press(a, secondGroup | XModifiers::shift), sign + a, "Ф", "Ф"},
        {"us", press(pad4, XModifiers::mod2), sign + pad4, "4", "4"},
        {"us", press(pad4), 123, std::nullopt, std::nullopt},
        {"us", press(left), 123, std::nullopt, std::nullopt},
        {"us", press(f5, XModifiers::control), 96, std::nullopt, std::nullopt},
        {"us", press(f5, XModifiers::control | XModifiers::mod1), 96, std::nullopt, std::nullopt},
        {"us,ru", press(a, secondGroup | XModifiers::control), sign + a, "\x01", "ф"},
        {"us", press(pause), sign + pause, std::nullopt, std::nullopt},
        {"us", press(tab), 48, "\t", "\t"},
        {"us", press(tab, XModifiers::shift), 48, std::nullopt, std::nullopt},
        {"us", press(space), 49, " ", " "},
        {"us", press(enter), 36, "\r", "\r"},
        {"us", press(padEnter), 76, "\r", "\r"},
    };
    for (const KeyCase& each : cases) {
        auto tried = keyboard(each.layouts);
        const auto event = tried.take(each.event);
        ASSERT_TRUE(event);
        EXPECT_EQ(event->keyboardEventKeycode, each.code) << each.layouts << " key " << int{each.event.detail};
        EXPECT_EQ(event->nsEvent->characters, each.characters) << each.layouts << " key " << int{each.event.detail};
        EXPECT_EQ(event->nsEvent->charactersIgnoringModifiers, each.charactersIgnoringModifiers)
            << each.layouts << " key " << int{each.event.detail};
    }
}

TEST(KeyboardTest, ARemappedKeyIsWhatItDoes) {
    auto swapped = keyboard("us", "caps:escape");
    EXPECT_EQ(swapped.take(press(capsLock))->keyboardEventKeycode, 53);
}

TEST(KeyboardTest, ADeadKeyGivesItsSignToTheNextKey) {
    auto german = keyboard("de");
    EXPECT_EQ(german.take(press(circumflex))->nsEvent->characters, "");
    german.take(release(circumflex));
    german.take(press(leftShift));  // no sign of its own
    const auto composed = german.take(press(e));
    EXPECT_EQ(composed->nsEvent->characters, "ê");
    EXPECT_EQ(composed->nsEvent->charactersIgnoringModifiers, "e");
    EXPECT_EQ(german.take(release(e))->nsEvent->characters, "e");
    german.take(press(circumflex));
    EXPECT_EQ(german.take(press(q))->nsEvent->characters, "") << "a row that makes no sense";
    EXPECT_EQ(german.take(press(q))->nsEvent->characters, "q");
}

TEST(KeyboardTest, TheComposeKeyTypesNothing) {
    auto composing = keyboard("us", "compose:menu");
    constexpr std::uint8_t menu = 135;
    EXPECT_EQ(composing.take(press(menu))->nsEvent->characters, std::nullopt);
    EXPECT_EQ(composing.take(press(a))->nsEvent->characters, "");
    EXPECT_EQ(composing.take(press(e))->nsEvent->characters, "æ");
}

TEST(KeyboardTest, WithoutALayoutKeysComeWithoutText) {
    Keyboard unknown(nullptr, KeyComposer(nullptr), {});
    const auto event = unknown.take(press(a, XModifiers::shift));
    ASSERT_TRUE(event);
    EXPECT_EQ(event->type, CGEventType::keyDown);
    EXPECT_EQ(event->flags, CGEventFlags::maskShift);
    EXPECT_EQ(event->nsEvent->characters, std::nullopt);
}

TEST(KeyboardTest, AnotherLayoutCountsFromItsTimeOn) {
    auto changing = keyboard("us");
    changing.replaceLayout(layout("de"), 1'000);
    EXPECT_EQ(changing.take(press(z, 0, 999))->nsEvent->characters, "y");
    EXPECT_EQ(changing.take(press(z, 0, 1'000))->nsEvent->characters, "z");
}

/// The flags of all changes that a row of events makes. Events carry the modifiers before them.
std::vector<CGEventFlags> changes(Keyboard keyboard, const std::vector<DeviceEvent>& events) {
    std::vector<CGEventFlags> flags;
    for (const DeviceEvent& each : events) {
        const auto event = keyboard.take(each);
        if (event) {
            EXPECT_EQ(event->type, CGEventType::flagsChanged);
            flags.push_back(event->flags);
        }
    }
    return flags;
}

TEST(KeyboardTest, AModifierKeyChangesTheFlagsAndIsNoKey) {
    using enum CGEventFlags;
    constexpr auto shift = XModifiers::shift;
    EXPECT_THAT(changes(keyboard("us"), {press(leftShift), release(leftShift, shift)}), ElementsAre(maskShift, none));
    EXPECT_THAT(changes(keyboard("us"), {press(leftShift), press(rightShift, shift), release(leftShift, shift),
                                         release(rightShift, shift)}),
                ElementsAre(maskShift, none))
        << "the second one changes nothing";
    EXPECT_THAT(changes(keyboard("us"), {press(leftControl), press(leftSuper, XModifiers::control)}),
                ElementsAre(maskControl, maskControl | maskCommand));
    EXPECT_THAT(
        changes(keyboard("us"), {press(leftShift), press(leftAlt, shift), release(leftAlt, shift | XModifiers::mod1)}),
        ElementsAre(maskShift, maskShift | maskAlternate, maskShift))
        << "with Shift, Alt is Meta";
    EXPECT_THAT(changes(keyboard("us", "altwin:swap_alt_win"), {press(leftAlt)}), ElementsAre(maskCommand));
    EXPECT_THAT(changes(keyboard("us,ru", "grp:alt_shift_toggle"), {press(leftAlt), press(leftShift, XModifiers::mod1),
                                                                    release(leftShift, secondGroup | XModifiers::mod1),
                                                                    release(leftAlt, secondGroup | XModifiers::mod1)}),
                ElementsAre(maskAlternate, none))
        << "with Alt, Shift is the switch of layouts";
    EXPECT_THAT(changes(keyboard("us", "shift:both_capslock"),
                        {press(leftShift), press(rightShift, shift), release(rightShift, shift | XModifiers::lock),
                         release(leftShift, shift | XModifiers::lock)}),
                ElementsAre(maskShift, maskShift | maskAlphaShift, maskAlphaShift));
    EXPECT_THAT(changes(keyboard("de"), {press(altGr), release(altGr, mod5), press(numLock)}), IsEmpty());
    EXPECT_THAT(changes(keyboard("us", "", {leftShift}), {release(leftShift, shift)}), ElementsAre(none))
        << "held since before";
}

TEST(KeyboardTest, CapsLockStaysUntilItsSecondRelease) {
    using enum CGEventFlags;
    constexpr auto lock = XModifiers::lock;
    EXPECT_THAT(changes(keyboard("us"), {press(capsLock), release(capsLock, lock)}), ElementsAre(maskAlphaShift));
    EXPECT_THAT(changes(keyboard("us"), {press(capsLock, lock), release(capsLock, lock)}), ElementsAre(none));
}

}  // namespace
}  // namespace zorvane
