// What has changed between two lists of sources.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SourceKind.hpp"
#include "SourceRow.hpp"

namespace zorvane::cli {

struct SourceChange {
    enum class Kind : std::uint8_t {
        added,
        changed,
        removed,
        reordered,  ///< the same sources in another order: windows were raised or lowered
    };
    Kind kind;
    SourceRow before;                ///< for changed and removed
    SourceRow after;                 ///< for added and changed
    std::vector<std::string> order;  ///< for reordered: all ids, of windows front to back
};

/// In this order: what went, what came, what changed, and whether the rest changed places.
std::vector<SourceChange> changesBetween(const SourceRows& before, const SourceRows& after);

/// One line for people, without its end: `changed window 41943046 "Notes": frame 300x200 at (0, 0) -> ...`.
std::string changeText(SourceKind kind, const SourceChange& change);

/// One line for scripts, without its end: an object with "change", "kind" and "source"; a changed one has the former
/// values of what changed as "previous"; for reordered there is "order" in place of "source".
std::string changeJSON(SourceKind kind, const SourceChange& change);

}  // namespace zorvane::cli
