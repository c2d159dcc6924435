#include "Zorvane/Platform/ScreenCaptureKit/SCShareableContent.hpp"

#include <fmt/format.h>

namespace zorvane {

std::string SCDisplay::debugDescription() const {
    return fmt::format("SCDisplay[id:{} frame:{}]", displayID, zorvane::debugDescription(frame));
}

}  // namespace zorvane
