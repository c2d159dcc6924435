// Which part of a display's content a stream shows.
#pragma once

#include <cstdint>
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

    /// Whether the whole display is shown as it is, so that no composition is needed.
    bool showsEverything() const;
    /// Whether what lies behind all windows is part of the picture; else that is black.
    bool showsDesktop() const {
        return kind == SCContentFilterKind::excludingWindows || kind == SCContentFilterKind::excludingApplications;
    }
    /// Whether `window` is part of the picture.
    bool shows(const SCWindow& window) const;
    std::string debugDescription() const;
};

}  // namespace zorvane
