#include "Zorvane/Platform/Linux/X11/Input/KeyComposer.hpp"

#include <xkbcommon/xkbcommon-compose.h>

#include <array>
#include <cstdlib>
#include <utility>

namespace zorvane {
namespace {

/// The name of the locale that decides on signs.
const char* userLocale() {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value && *value) {
            return value;
        }
    }
    return "C";
}

}  // namespace

KeyComposer KeyComposer::ofUser() {
    const auto context = makeXkbContext();
    for (const char* locale : {userLocale(), "C.UTF-8", "en_US.UTF-8"}) {
        XkbHandle<xkb_compose_table> rules(
            context ? xkb_compose_table_new_from_locale(context.get(), locale, XKB_COMPOSE_COMPILE_NO_FLAGS) : nullptr);
        if (rules) {
            return KeyComposer(std::move(rules));
        }
    }
    return KeyComposer(nullptr);
}

KeyComposer::KeyComposer(XkbHandle<xkb_compose_table> rules)
    : state_(rules ? xkb_compose_state_new(rules.get(), XKB_COMPOSE_STATE_NO_FLAGS) : nullptr) {}

std::optional<std::string> KeyComposer::take(std::uint32_t keysym) {
    if (!state_ || xkb_compose_state_feed(state_.get(), keysym) == XKB_COMPOSE_FEED_IGNORED) {
        return std::nullopt;
    }
    std::array<char, 256> text{};
    switch (xkb_compose_state_get_status(state_.get())) {
        case XKB_COMPOSE_COMPOSING:
        case XKB_COMPOSE_CANCELLED:
            return "";
        case XKB_COMPOSE_COMPOSED:
            xkb_compose_state_get_utf8(state_.get(), text.data(), text.size());
            return text.data();
        default:
            return std::nullopt;
    }
}

}  // namespace zorvane
