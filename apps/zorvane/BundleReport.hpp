// What is in a bundle, file by file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "SegmentedStreams.hpp"
#include "SideFileSummary.hpp"
#include "Zorvane/ZVBundleInfo.hpp"
#include "Zorvane/ZVMediaInfo.hpp"

namespace zorvane::cli {

struct FileReport {
    ZVBundleInfo::FileAsset asset;
    /// Bytes; absent if the file is missing.
    std::optional<std::uintmax_t> size = std::nullopt;
    /// Absent for a side file, and for a file that can't be read.
    std::optional<ZVMediaInfo> media = std::nullopt;
    /// What a side file tells; absent for all else.
    std::optional<InputSummary> input = std::nullopt;
    std::optional<TopWindowSummary> topWindows = std::nullopt;
    /// Why the file can't be read.
    std::optional<std::string> error = std::nullopt;
};

struct BundleReport {
    std::filesystem::path bundle;
    std::int64_t version = 0;
    std::vector<FileReport> files;
    /// Segmented streams, which no manifest lists.
    std::vector<StreamReport> streams;
    /// Media files that the manifest doesn't list.
    std::vector<std::string> unlisted;

    bool isSound() const;
    bool isVersionKnown() const { return version == 1; }
};

/// Reads a bundle. What is wrong with one file stands in its report. Throws a `std::exception` with a text for the user
/// if there is no manifest that can be read.
BundleReport readBundle(const std::filesystem::path& bundle);

/// For people: a line for each file and one for each of its tracks.
std::string bundleText(const BundleReport& report);

/// One JSON object and a line feed.
std::string bundleJSON(const BundleReport& report);

}  // namespace zorvane::cli
