// Reads pictures for a user interface with the FFmpeg libraries.
#pragma once

#include <filesystem>
#include <optional>

#include "Zorvane/Platform/AppKit/NSImage.hpp"

namespace zorvane {

/// The picture in a PNG or SVG file; nothing if there is none, it is damaged, or its sides aren't from 1 to 1024
/// pixels. Files beyond 4 MB aren't read. An SVG is drawn 256 pixels wide or high, whichever is longer, as far as the
/// libraries were built with that. Any thread; blocks for the file.
std::optional<NSImage> readImageFile(const std::filesystem::path& file);

}  // namespace zorvane
