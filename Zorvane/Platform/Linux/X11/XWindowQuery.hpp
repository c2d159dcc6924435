// Asks all about one window.
#pragma once

#include <optional>
#include <vector>

#include "Zorvane/Platform/Linux/X11/WindowOwner.hpp"
#include "Zorvane/Platform/Linux/X11/XProperty.hpp"
#include "Zorvane/Platform/Linux/X11/XWindow.hpp"

namespace zorvane {

class XConnection;
struct WindowAtoms;

/// The questions are sent when the object is made, so that many windows cost one round trip: first make all queries,
/// then take their answers.
class XWindowQuery {
  public:
    /// `currentDesktop` is the virtual desktop that is shown; nothing if there are none.
    XWindowQuery(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t window,
                 std::optional<std::uint32_t> currentDesktop);

    /// Waits for the server; to be called once. Nothing if the window went away, or is one that only takes input.
    std::optional<XWindow> answer() const;

  private:
    struct Attributes {
        bool isViewable;
        bool overridesRedirect;
    };
    std::optional<CGRect> frame() const;
    std::optional<Attributes> attributes() const;
    std::optional<std::string> title() const;
    CGWindowLevel level(const std::vector<std::uint32_t>& state, bool overridesRedirect) const;
    bool isOnCurrentDesktop() const;

    const XConnection& connection_;
    const WindowAtoms& atoms_;
    std::uint32_t window_;
    std::optional<std::uint32_t> currentDesktop_;
    unsigned int geometry_;
    unsigned int position_;
    unsigned int attributes_;
    WindowOwnerQuery owner_;
    XPropertyQuery name_;
    XPropertyQuery oldName_;
    XPropertyQuery class_;
    XPropertyQuery type_;
    XPropertyQuery state_;
    XPropertyQuery desktop_;
    XPropertyQuery opacity_;
    XPropertyQuery frameExtents_;
    XPropertyQuery shadowExtents_;
};

}  // namespace zorvane
