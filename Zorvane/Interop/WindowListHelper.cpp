#include "Zorvane/Interop/WindowListHelper.hpp"

#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

std::optional<std::vector<CGWindowID>> CGWindowListCreateWrapper(CGWindowListOption option,
                                                                 CGWindowID relativeToWindow) {
    auto ids = Platform::current()->windowList->create(option, relativeToWindow);
    return ids && !ids->empty() ? ids : std::nullopt;
}

}  // namespace zorvane
