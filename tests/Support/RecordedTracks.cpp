#include "tests/Support/RecordedTracks.hpp"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "Zorvane/ZVInputEvent.hpp"
#include "Zorvane/ZVWindowPresence.hpp"
#include "tests/Support/MovieReader.hpp"
#include "tests/Support/SoundCollector.hpp"

namespace zorvane::testing {
namespace {

constexpr std::uint8_t bright = 180;
constexpr float loud = 0.1F;

/// Side files tell times in whole nanoseconds.
constexpr double sideFileGrain = 1e-9;

RecordedTrack pictureTrack(const std::filesystem::path& file) {
    const Movie movie = readMovie(file, MovieDetail::pictures);
    const auto seconds = [&movie](std::int64_t ticks) { return static_cast<double>(ticks) / movie.timescale; };
    RecordedTrack track{.name = file.filename().string() + " pictures",
                        .begin = seconds(movie.startTime),
                        .end = seconds(movie.startTime + movie.duration),
                        .grain = seconds(1)};
    const auto flash = std::ranges::find_if(movie.pictures, [](const MoviePicture& picture) {
        return picture.lumaAt(picture.width / 2, picture.height / 2) > bright;
    });
    if (flash != movie.pictures.end()) {
        track.event = seconds(flash->pts);
    }
    return track;
}

RecordedTrack soundTrack(const std::filesystem::path& file) {
    const MovieSound sound = readSound(file);
    RecordedTrack track{.name = file.filename().string() + " sound",
                        .begin = static_cast<double>(sound.startTime) / sound.timescale,
                        .end = static_cast<double>(sound.startTime + sound.duration) / sound.timescale,
                        .grain = 1.0 / sound.sampleRate};
    const auto tone = std::ranges::find_if(sound.samples, [](float sample) { return std::abs(sample) > loud; });
    if (tone != sound.samples.end()) {
        track.event = static_cast<double>((tone - sound.samples.begin()) / sound.channels) / sound.sampleRate;
    }
    return track;
}

RecordedTrack inputTrack(const std::filesystem::path& file) {
    RecordedTrack track{.name = file.filename().string(), .grain = sideFileGrain};
    for (const ZVInputEvent& event : ZVInputEvent::read(file)) {
        if (!track.event && event.type() == ZVInputEvent::TypeValue::keyboard) {
            track.event = event.time().seconds();
        }
    }
    return track;
}

/// Whether a side file has its closing line.
bool isClosed(const std::filesystem::path& file) {
    std::ifstream stream(file);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    return text.ends_with("]");
}

RecordedTrack topWindowTrack(const std::filesystem::path& file) {
    const auto windows = ZVWindowPresence::read(file);
    RecordedTrack track{
        .name = file.filename().string(), .begin = windows.at(0).time().seconds(), .grain = sideFileGrain};
    if (isClosed(file)) {
        track.end = windows.back().time().seconds();
    }
    const auto windowID = [](const ZVWindowPresence& presence) {
        const auto* present = std::get_if<ZVWindowInfo>(&presence.payload());
        return present ? present->windowID : 0;
    };
    const auto change = std::ranges::find_if(
        windows, [&](const ZVWindowPresence& presence) { return windowID(presence) != windowID(windows.front()); });
    if (change != windows.end()) {
        track.event = change->time().seconds();
    }
    return track;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const RecordedTrack& track) {
    stream << track.name << " from " << track.begin << " to ";
    track.end ? stream << *track.end : stream << "?";
    stream << " with an event at ";
    return track.event ? stream << *track.event : stream << "no time";
}

std::vector<RecordedTrack> tracksOfFile(const std::filesystem::path& file) {
    const std::string name = file.filename().string();
    if (name.ends_with(".input-events.json")) {
        return {inputTrack(file)};
    }
    if (name.ends_with(".top-windows.json")) {
        return {topWindowTrack(file)};
    }
    std::vector<RecordedTrack> tracks;
    for (const auto& read : {pictureTrack, soundTrack}) {
        try {
            tracks.push_back(read(file));
        } catch (const std::runtime_error&) {  // it has no such track, or a broken one
        }
    }
    // What holds sound begins with a whole frame of it, its pictures too.
    const auto coarsest = std::ranges::max_element(tracks, {}, &RecordedTrack::grain);
    for (RecordedTrack& track : tracks) {
        track.grain = coarsest->grain;
    }
    return tracks;
}

RecordedTrack trackOfSamples(const std::vector<CMSampleBuffer>& samples, double recordFrom, double recordUntil) {
    const CMSampleBuffer& first = samples.at(0);
    const CMSampleBuffer& last = samples.back();
    const double begin = first.presentationTimeStamp().seconds();
    const double end = (last.presentationTimeStamp() + last.duration()).seconds();
    RecordedTrack track{.name = "samples",
                        .begin = std::max(begin, recordFrom) - recordFrom,
                        .end = std::min(end, recordUntil) - recordFrom,
                        .grain = 1 / first.audioBuffer()->format().sampleRate};
    if (!breaksIn(samples).empty()) {
        track.end = 0;
    }
    forEachFrame(samples, [&](double time, const float* channels) {
        if (!track.event && std::abs(channels[0]) > loud) {
            track.event = time - recordFrom;
        }
    });
    return track;
}

}  // namespace zorvane::testing
