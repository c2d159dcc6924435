// Display links of an X server.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/CoreVideo/CVDisplayLink.hpp"

namespace zorvane {

/// A link calls at the rate of its display's mode while the pointer or the cursor changes and for a moment after that;
/// then its thread, "zv.displaylink", waits for its connection and for nothing else. An X server tells nobody when a
/// display refreshes, so the calls have the rate, and not the moments.
///
/// When the server goes away or comes, the link calls once; while it is away, whenever it tried to reach it in vain.
class X11DisplayLinks final : public CVDisplayLinks {
  public:
    explicit X11DisplayLinks(std::shared_ptr<CGDisplays> displays) : displays_(std::move(displays)) {}

    Created createWithActiveCGDisplays() override;

  private:
    const std::shared_ptr<CGDisplays> displays_;
};

}  // namespace zorvane
