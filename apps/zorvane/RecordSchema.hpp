// What is to be recorded, in the library's words.
#pragma once

#include <filesystem>
#include <functional>
#include <stop_token>
#include <vector>

#include "CommandLine.hpp"
#include "Zorvane/ZVRecorder.hpp"

namespace zorvane::cli {

/// Hears of each segment's file, on a thread of the library.
using SegmentHandler = std::function<void(const std::filesystem::path& segment)>;

/// One item for each source that the user named; the main display if none was. Throws a `std::exception` with a text
/// for the user if a source isn't there. Gives up when stop is requested.
std::vector<ZVRecorder::SchemaItem> schemaItems(const RecordOptions& options, const SegmentHandler& onSegment,
                                                std::stop_token stopToken);

}  // namespace zorvane::cli
