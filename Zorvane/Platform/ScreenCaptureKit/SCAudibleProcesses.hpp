// Whose sound a stream gives.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {

/// A process that is named here stands for those that it has started as well, since many applications play from a
/// process of their own. That goes for the current process too.
struct SCAudibleProcesses {
    std::optional<std::vector<std::int32_t>> only;  ///< nobody else is heard; absent: all may be
    std::vector<std::int32_t> except;               ///< never heard, also if they are among `only`

    bool areAll() const { return !only && except.empty(); }
    /// Whether a process is heard, given itself and those it descends from.
    bool include(std::span<const std::int32_t> lineage) const;

    bool operator==(const SCAudibleProcesses&) const = default;
};

/// Of a filter by windows, all. Of a filter by applications, those that stay. Of one with a subject, the subject's
/// application only, unless the applications leave that out.
SCAudibleProcesses audibleProcesses(const SCContentFilter& filter, const SCStreamConfiguration& configuration,
                                    std::int32_t currentProcess);

}  // namespace zorvane
