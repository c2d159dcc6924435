// What the files of a bundle are like, told alike for media, side files and streams of samples.
#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane::testing {

/// One track of a movie, a side file or a stream. Seconds since the recording's start.
struct RecordedTrack {
    std::string name;  ///< of the file, and of the kind of track
    double begin = 0;
    std::optional<double> end;  ///< absent if it doesn't say where it ends
    double grain = 0;           ///< how exactly it can tell times
    /// Where something first stands that is bright, loud, pressed or newly in front.
    std::optional<double> event;
};

std::ostream& operator<<(std::ostream& stream, const RecordedTrack& track);

/// Of a side file, which its name tells, or else of a movie: the first track of pictures and the first one of sound
/// that can be read.
std::vector<RecordedTrack> tracksOfFile(const std::filesystem::path& file);

/// Of a stream that was handed out in a recording from `recordFrom` until `recordUntil`, in seconds on the host clock;
/// sound from outside doesn't count. Nothing was lost if its end is the recording's.
RecordedTrack trackOfSamples(const std::vector<CMSampleBuffer>& samples, double recordFrom, double recordUntil);

}  // namespace zorvane::testing
