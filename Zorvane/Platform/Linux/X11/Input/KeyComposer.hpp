// Dead keys and the Compose key.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zorvane/Platform/Linux/X11/Input/XkbHandles.hpp"

namespace zorvane {

/// Puts the signs of keys that are pressed one after another together. One thread.
class KeyComposer {
  public:
    /// By the rules of the user's locale, or of none if there are none to be had.
    static KeyComposer ofUser();
    /// Null for no rules.
    explicit KeyComposer(XkbHandle<xkb_compose_table> rules);

    /// Takes the next sign. Nothing if it stands for itself; empty if it waits for the next one, or ended a row that
    /// makes no sense; else what the row gives.
    std::optional<std::string> take(std::uint32_t keysym);

  private:
    XkbHandle<xkb_compose_state> state_;  // null without rules
};

}  // namespace zorvane
