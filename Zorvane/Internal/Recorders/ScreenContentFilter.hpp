// Finds what a screen recording is to show: the display, its content filter and the crop on it.
#pragma once

#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCShareableContent.hpp"

namespace zorvane {

/// How windows and applications are let through, by their ids.
struct DisplayFilterOptions {
    SCContentFilterKind kind = SCContentFilterKind::excludingApplications;
    std::vector<std::int32_t> processIDs;  ///< for the two kinds by application
    std::vector<std::uint32_t> windowIDs;  ///< the windows, or the exceptions among the applications' windows
};

/// A filter with the display it lies on.
struct ResolvedContentFilter {
    SCContentFilter filter;
    SCDisplay display;
    std::optional<CGRect> cropRect;  ///< points, relative to the display's origin; absent for the whole display

    /// The area of capture in global coordinates, with the origin at the top left of the main display.
    CGRect globalCrop() const;
};

/// The filter of a display, without a crop. Ids that no window or application has any more fall away. Throws a
/// `ZVError` for a display that isn't there: an internal error with a message for the user if the display has ever been
/// seen, else invalid configuration. Throws what retrieving the shareable content throws.
Task<ResolvedContentFilter> createDisplayFilter(std::uint32_t displaySerialNumber, DisplayFilterOptions options,
                                                Logger logger);

/// The filter and crop that show one window's application where that window lies now. Throws as above, also for a
/// window on no display.
Task<ResolvedContentFilter> createWindowBasedCropFilter(std::uint32_t windowID, Logger logger);

}  // namespace zorvane
