// The screen as it is.
#pragma once

#include "Zorvane/Platform/Linux/X11/ScreenSource.hpp"

namespace zorvane {

class XConnection;

/// The root window with everything on it.
class WholeScreen final : public ScreenSource {
  public:
    /// Throws `NSError` if the server lacks an extension that is needed.
    WholeScreen(XConnection& connection, const ScreenArea& area);

    Place place() const override;
    void note(const xcb_generic_event_t& event, ScreenChanges& changes) override;
    void refresh() override;

  private:
    XConnection& connection_;
    const ScreenArea area_;
    std::uint32_t damage_ = 0;
};

}  // namespace zorvane
