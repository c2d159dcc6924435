// Which part of a display's content a stream shows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/ScreenCaptureKit/SCShareableContent.hpp"

namespace zorvane {

/// What a filter does with its windows and applications.
enum class SCContentFilterKind : std::uint8_t {
    includingWindows,       ///< only `windows` are shown
    excludingWindows,       ///< all but `windows` are shown
    includingApplications,  ///< only windows of `applications`, and `windows` the other way round
    excludingApplications,  ///< all but windows of `applications`, and `windows` the other way round
};

/// A plain value; made by `ScreenRecorder`, read by the stream of a backend.
struct SCContentFilter {
    SCContentFilterKind kind = SCContentFilterKind::excludingApplications;
    SCDisplay display;
    std::vector<SCRunningApplication> applications;  ///< empty for the two kinds by window
    std::vector<SCWindow> windows;                   ///< the listed windows, or the exceptions among the applications'
    /// Of a window crop: nothing is shown but what belongs to this window's application, on black, whatever else is
    /// started later; the lists narrow that down. An owner that is absent is no application.
    std::optional<SCWindow> subject;

    /// Whether the whole display is shown as it is, so that no composition is needed.
    bool showsEverything() const;
    /// Whether what lies behind all windows is part of the picture; else that is black.
    bool showsDesktop() const {
        return !subject &&
               (kind == SCContentFilterKind::excludingWindows || kind == SCContentFilterKind::excludingApplications);
    }
    /// Whether `window`, which may be newer than the filter, is part of the picture.
    bool shows(const SCWindow& window) const;
    std::string debugDescription() const;
};

}  // namespace zorvane
