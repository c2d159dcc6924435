// Calls in step with a display's refresh.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"

namespace zorvane {

/// 0 is success.
using CVReturn = std::int32_t;
inline constexpr CVReturn kCVReturnSuccess = 0;
inline constexpr CVReturn kCVReturnError = -6660;
inline constexpr CVReturn kCVReturnInvalidDisplay = -6670;
inline constexpr CVReturn kCVReturnDisplayLinkAlreadyRunning = -6671;
inline constexpr CVReturn kCVReturnDisplayLinkNotRunning = -6672;
inline constexpr CVReturn kCVReturnDisplayLinkCallbacksNotSet = -6673;

/// Calls its handler once for each refresh of one display, one call at a time on a thread of the link. A refresh at
/// which neither the pointer nor the cursor has changed since the last call may be left out; the first one after a
/// start never is, nor is the first one after a change. Any thread.
class CVDisplayLink {
  public:
    /// The result is always 0.
    using OutputHandler = std::function<CVReturn()>;

    /// Ends as `stop` does.
    virtual ~CVDisplayLink() = default;

    /// Before the start.
    virtual CVReturn setOutputHandler(OutputHandler handler) = 0;
    /// Follows another display, also while it runs.
    virtual CVReturn setCurrentCGDisplay(CGDirectDisplayID displayID) = 0;
    virtual CGDirectDisplayID currentCGDisplay() const = 0;
    virtual CVReturn start() = 0;
    /// When it returns no call is under way, unless it is made inside the handler.
    virtual CVReturn stop() = 0;
};

class CVDisplayLinks {
  public:
    virtual ~CVDisplayLinks() = default;

    struct Created {
        CVReturn code = kCVReturnSuccess;
        std::unique_ptr<CVDisplayLink> link;  ///< may be null
    };
    /// A link that stands still, on the main display.
    virtual Created createWithActiveCGDisplays() = 0;
};

}  // namespace zorvane
