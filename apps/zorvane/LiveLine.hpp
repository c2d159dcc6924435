// The one line that shows how a recording is going.
#pragma once

#include <cstdint>
#include <string>

#include "Zorvane/ZVRecorder.hpp"

namespace zorvane::cli {

/// The line at `now`, seconds on the host clock; `size` is the bundle's so far.
std::string liveLine(const ZVRecorder::Statistics& statistics, double now, std::uintmax_t size);

/// "[######    ]" for a peak from 0 to 1: six decibels a cell, and "!" where the sound is cut off.
std::string levelMeter(double peak);

/// Whether any picture has come: there is none where only sound is recorded.
bool hasPictures(const ZVRecorder::Statistics& statistics);

/// "181 frames written, 2 dropped, 60 repeated".
std::string frameCounts(const ZVRecorder::Statistics& statistics);

}  // namespace zorvane::cli
