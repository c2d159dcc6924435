// Owners of what xkbcommon hands out.
#pragma once

#include <memory>

struct xkb_context;
struct xkb_keymap;
struct xkb_state;
struct xkb_compose_table;
struct xkb_compose_state;

namespace zorvane {

struct XkbUnref {
    void operator()(xkb_context* context) const noexcept;
    void operator()(xkb_keymap* keymap) const noexcept;
    void operator()(xkb_state* state) const noexcept;
    void operator()(xkb_compose_table* table) const noexcept;
    void operator()(xkb_compose_state* state) const noexcept;
};

template <class Object>
using XkbHandle = std::unique_ptr<Object, XkbUnref>;

/// One that writes nothing to the standard error output.
XkbHandle<xkb_context> makeXkbContext();

}  // namespace zorvane
