#include "Zorvane/Platform/Linux/X11/Input/XkbHandles.hpp"

#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon.h>

#include <cstdarg>

namespace zorvane {

void XkbUnref::operator()(xkb_context* context) const noexcept {
    xkb_context_unref(context);
}

void XkbUnref::operator()(xkb_keymap* keymap) const noexcept {
    xkb_keymap_unref(keymap);
}

void XkbUnref::operator()(xkb_state* state) const noexcept {
    xkb_state_unref(state);
}

void XkbUnref::operator()(xkb_compose_table* table) const noexcept {
    xkb_compose_table_unref(table);
}

void XkbUnref::operator()(xkb_compose_state* state) const noexcept {
    xkb_compose_state_unref(state);
}

XkbHandle<xkb_context> makeXkbContext() {
    XkbHandle<xkb_context> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (context) {
        xkb_context_set_log_fn(context.get(), [](xkb_context*, xkb_log_level, const char*, va_list) {});
    }
    return context;
}

}  // namespace zorvane
