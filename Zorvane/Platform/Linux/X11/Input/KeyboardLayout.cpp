#include "Zorvane/Platform/Linux/X11/Input/KeyboardLayout.hpp"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "Zorvane/Platform/Linux/X11/Input/KeyCodes.hpp"

namespace zorvane {
namespace {

/// Of a state's bits.
xkb_layout_index_t groupOf(std::uint16_t state) {
    constexpr int firstGroupBit = 13;
    return state >> firstGroupBit & 3U;
}

void set(xkb_state* xkbState, std::uint16_t state) {
    xkb_state_update_mask(xkbState, state & XModifiers::all, 0, 0, 0, 0, groupOf(state));
}

std::uint16_t modifiersOf(xkb_state* state, xkb_state_component component) {
    return static_cast<std::uint16_t>(xkb_state_serialize_mods(state, component) & XModifiers::all);
}

/// What pressing and releasing the key does. The state's modifiers choose what the key stands for; they count as
/// latched, since those that the key holds or locks couldn't be told from held or locked ones.
ModifierEffect trial(xkb_keymap* keymap, std::uint8_t key, std::uint16_t state) {
    const XkbHandle<xkb_state> tried(xkb_state_new(keymap));
    xkb_state_update_mask(tried.get(), 0, state & XModifiers::all, 0, 0, 0, groupOf(state));
    xkb_state_update_key(tried.get(), key, XKB_KEY_DOWN);
    const std::uint16_t modifiers = modifiersOf(tried.get(), XKB_STATE_MODS_DEPRESSED);
    xkb_state_update_key(tried.get(), key, XKB_KEY_UP);
    return {modifiers, modifiersOf(tried.get(), XKB_STATE_MODS_LOCKED) != 0};
}

}  // namespace

KeyboardLayout::KeyboardLayout(XkbHandle<xkb_keymap> keymap)
    : keymap_(std::move(keymap)), state_(xkb_state_new(keymap_.get())), modifierMap_(findModifiers()) {}

void KeyboardLayout::setState(std::uint16_t state) {
    set(state_.get(), state);
}

std::uint32_t KeyboardLayout::keysym(std::uint8_t key, std::uint16_t state) {
    setState(state);
    return xkb_state_key_get_one_sym(state_.get(), key);
}

std::string KeyboardLayout::text(std::uint8_t key, std::uint16_t state) {
    setState(state);
    std::array<char, 64> buffer;
    const int size = xkb_state_key_get_utf8(state_.get(), key, buffer.data(), buffer.size());
    // What is longer than the buffer was cut, perhaps within a sign.
    return size > 0 && static_cast<std::size_t>(size) < buffer.size() ? std::string(buffer.data(), buffer.data() + size)
                                                                      : std::string();
}

std::string KeyboardLayout::plainText(std::uint8_t key, std::uint16_t state) {
    const int dropped = XModifiers::all & ~(XModifiers::shift | modifierMap_.numLock);
    const auto plain = static_cast<std::uint16_t>(state & ~dropped);
    const std::string_view sign = signOfDeadKey(keysym(key, plain));
    return sign.empty() ? text(key, plain) : std::string(sign);
}

std::optional<ModifierEffect> KeyboardLayout::modifierEffect(std::uint8_t key, std::uint16_t state) {
    return isModifier(keysym(key, state)) ? std::optional(trial(keymap_.get(), key, state)) : std::nullopt;
}

/// Modifiers without a meaning of their own have that of the keys that set them.
ModifierMap KeyboardLayout::findModifiers() {
    ModifierMap map{.alternate = 0, .command = 0, .numLock = 0};
    const auto last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(keymap_.get()), 255);
    for (xkb_keycode_t key = xkb_keymap_min_keycode(keymap_.get()); key <= last; ++key) {
        switch (keysym(static_cast<std::uint8_t>(key), 0)) {
            case XKB_KEY_Alt_L:
            case XKB_KEY_Alt_R:
            case XKB_KEY_Meta_L:
            case XKB_KEY_Meta_R:
                map.alternate |= trial(keymap_.get(), static_cast<std::uint8_t>(key), 0).modifiers;
                break;
            case XKB_KEY_Super_L:
            case XKB_KEY_Super_R:
            case XKB_KEY_Hyper_L:
            case XKB_KEY_Hyper_R:
                map.command |= trial(keymap_.get(), static_cast<std::uint8_t>(key), 0).modifiers;
                break;
            case XKB_KEY_Num_Lock:
                map.numLock |= trial(keymap_.get(), static_cast<std::uint8_t>(key), 0).modifiers;
                break;
            default:
                break;
        }
    }
    return map;
}

}  // namespace zorvane
