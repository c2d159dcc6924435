#include "Zorvane/Platform/Linux/X11/Input/KeyCodes.hpp"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace zorvane {
namespace {

template <class Value>
using Entry = std::pair<std::uint32_t, Value>;

// Keys of the numeric pad count by what they do without Num Lock; Enter is a key of its own there.
constexpr std::array keyCodes{
    Entry<std::uint8_t>{XKB_KEY_Escape, 53},        Entry<std::uint8_t>{XKB_KEY_BackSpace, 51},
    Entry<std::uint8_t>{XKB_KEY_Tab, 48},           Entry<std::uint8_t>{XKB_KEY_ISO_Left_Tab, 48},
    Entry<std::uint8_t>{XKB_KEY_KP_Tab, 48},        Entry<std::uint8_t>{XKB_KEY_Return, 36},
    Entry<std::uint8_t>{XKB_KEY_KP_Enter, 76},      Entry<std::uint8_t>{XKB_KEY_space, 49},
    Entry<std::uint8_t>{XKB_KEY_KP_Space, 49},      Entry<std::uint8_t>{XKB_KEY_Left, 123},
    Entry<std::uint8_t>{XKB_KEY_KP_Left, 123},      Entry<std::uint8_t>{XKB_KEY_Right, 124},
    Entry<std::uint8_t>{XKB_KEY_KP_Right, 124},     Entry<std::uint8_t>{XKB_KEY_Down, 125},
    Entry<std::uint8_t>{XKB_KEY_KP_Down, 125},      Entry<std::uint8_t>{XKB_KEY_Up, 126},
    Entry<std::uint8_t>{XKB_KEY_KP_Up, 126},        Entry<std::uint8_t>{XKB_KEY_Delete, 117},
    Entry<std::uint8_t>{XKB_KEY_KP_Delete, 117},    Entry<std::uint8_t>{XKB_KEY_Home, 115},
    Entry<std::uint8_t>{XKB_KEY_KP_Home, 115},      Entry<std::uint8_t>{XKB_KEY_End, 119},
    Entry<std::uint8_t>{XKB_KEY_KP_End, 119},       Entry<std::uint8_t>{XKB_KEY_Page_Up, 116},
    Entry<std::uint8_t>{XKB_KEY_KP_Page_Up, 116},   Entry<std::uint8_t>{XKB_KEY_Page_Down, 121},
    Entry<std::uint8_t>{XKB_KEY_KP_Page_Down, 121}, Entry<std::uint8_t>{XKB_KEY_Clear, 71},
    Entry<std::uint8_t>{XKB_KEY_KP_F1, 122},        Entry<std::uint8_t>{XKB_KEY_KP_F2, 120},
    Entry<std::uint8_t>{XKB_KEY_KP_F3, 99},         Entry<std::uint8_t>{XKB_KEY_KP_F4, 118},
};

/// F1 to F19.
constexpr std::array<std::uint8_t, 19> functionKeyCodes{122, 120, 99,  118, 96,  97,  98, 100, 101, 109,
                                                        103, 111, 105, 107, 113, 106, 64, 79,  80};

// Where a sign doesn't stand for itself, a dotted circle carries it.
constexpr std::array deadKeySigns{
    Entry<std::string_view>{XKB_KEY_dead_grave, "`"},
    Entry<std::string_view>{XKB_KEY_dead_acute, "´"},
    Entry<std::string_view>{XKB_KEY_dead_circumflex, "^"},
    Entry<std::string_view>{XKB_KEY_dead_tilde, "~"},
    Entry<std::string_view>{XKB_KEY_dead_macron, "¯"},
    Entry<std::string_view>{XKB_KEY_dead_breve, "˘"},
    Entry<std::string_view>{XKB_KEY_dead_abovedot, "˙"},
    Entry<std::string_view>{XKB_KEY_dead_diaeresis, "¨"},
    Entry<std::string_view>{XKB_KEY_dead_abovering, "°"},
    Entry<std::string_view>{XKB_KEY_dead_doubleacute, "˝"},
    Entry<std::string_view>{XKB_KEY_dead_caron, "ˇ"},
    Entry<std::string_view>{XKB_KEY_dead_cedilla, "¸"},
    Entry<std::string_view>{XKB_KEY_dead_ogonek, "˛"},
    Entry<std::string_view>{XKB_KEY_dead_iota, "ͺ"},
    Entry<std::string_view>{XKB_KEY_dead_voiced_sound, "゛"},
    Entry<std::string_view>{XKB_KEY_dead_semivoiced_sound, "゜"},
    Entry<std::string_view>{XKB_KEY_dead_belowdot, "◌̣"},
    Entry<std::string_view>{XKB_KEY_dead_hook, "◌̉"},
    Entry<std::string_view>{XKB_KEY_dead_horn, "◌̛"},
    Entry<std::string_view>{XKB_KEY_dead_stroke, "/"},
    Entry<std::string_view>{XKB_KEY_dead_psili, "᾿"},
    Entry<std::string_view>{XKB_KEY_dead_dasia, "῾"},
    Entry<std::string_view>{XKB_KEY_dead_currency, "¤"},
    Entry<std::string_view>{XKB_KEY_dead_greek, "µ"},
};

template <class Value, std::size_t size>
constexpr std::optional<Value> find(const std::array<Entry<Value>, size>& entries, std::uint32_t keysym) {
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const Entry<Value>& entry) { return entry.first == keysym; });
    return found == entries.end() ? std::nullopt : std::optional(found->second);
}

constexpr bool isBetween(std::uint32_t keysym, std::uint32_t first, std::uint32_t last) {
    return keysym >= first && keysym <= last;
}

}  // namespace

std::int64_t keyCodeOf(std::uint32_t keysym, std::uint8_t key) {
    constexpr std::int64_t firstOther = 256;
    if (isBetween(keysym, XKB_KEY_F1, XKB_KEY_F19)) {
        return functionKeyCodes[keysym - XKB_KEY_F1];
    }
    if (const auto code = find(keyCodes, keysym)) {
        return *code;
    }
    return firstOther + key;
}

bool isModifier(std::uint32_t keysym) {
    return isBetween(keysym, XKB_KEY_Shift_L, XKB_KEY_Hyper_R) ||
           isBetween(keysym, XKB_KEY_ISO_Lock, XKB_KEY_ISO_Level5_Lock) || keysym == XKB_KEY_Mode_switch ||
           keysym == XKB_KEY_Num_Lock;
}

std::string_view signOfDeadKey(std::uint32_t keysym) {
    return find(deadKeySigns, keysym).value_or(std::string_view());
}

}  // namespace zorvane
