#include "Zorvane/Platform/FFmpeg/MovieFile.hpp"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/MovieBoxes.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

/// In microseconds. A fragment costs about a hundred bytes a track beside its media, and what is not in a fragment yet
/// is lost in a crash.
constexpr std::int64_t fragmentTime = 400'000;

/// A fragment's boxes and the first box of the file come from a muxer that was told what to write.
MovieBox requireBox(std::span<const std::byte> boxes, std::string_view type) {
    const std::optional<MovieBox> box = findBox(boxes, type);
    if (!box) {
        throw NSError(AVFoundationErrorDomain, AVErrorUnknown, {"The movie's muxer left out a box.", nullptr, {}});
    }
    return *box;
}

}  // namespace

MovieFile::MovieFile(std::unique_ptr<OutputFile> file, AVFileType fileType, std::span<const MediaTrackFormat> formats)
    : file_(std::move(file)),
      fragments_(fileType, formats, Muxer::Form::fragmented),
      index_(fileType, formats, Muxer::Form::whole) {
    fragments_.sink().keepFrom(0);
    index_.sink().keepFrom(std::numeric_limits<std::int64_t>::max());
    for (std::size_t number = 0; number < formats.size(); ++number) {
        tracks_.emplace_back(fragments_, index_, number, formats[number]);
        entries_.emplace_back(*this, tracks_.back());
    }
}

void MovieFile::Entry::append(AVPacket& packet) {
    track_.append(packet);
    if (track_.waitingTime() >= fragmentTime) {
        movie_.releaseHeldBehind();
        movie_.writeFragment();
    }
}

void MovieFile::flush() {
    if (waitingFragment()) {
        std::ranges::for_each(tracks_, &MovieTrack::releaseHeld);
        writeFragment();
    }
}

std::optional<std::uint64_t> MovieFile::waitingFragment() const {
    if (std::ranges::any_of(tracks_, &MovieTrack::isWaiting)) {
        return fragmentNumber_;
    }
    return std::nullopt;
}

bool MovieFile::isEmpty() const {
    return std::ranges::all_of(tracks_, &MovieTrack::isEmpty);
}

void MovieFile::finish(std::span<const std::optional<std::int64_t>> endTicks) {
    for (std::size_t number = 0; number < tracks_.size(); ++number) {
        tracks_[number].end(endTicks[number]);
    }
    if (waitingFragment()) {
        writeFragment();
    }
    std::ranges::for_each(tracks_, &MovieTrack::addRestToIndex);
    writeIndex();
    file_->close();
}

// A still screen's picture must not stay out of the file because sound fills the fragments.
void MovieFile::releaseHeldBehind() {
    std::int64_t newest = std::numeric_limits<std::int64_t>::min();
    for (const MovieTrack& track : tracks_) {
        newest = track.isEmpty() ? newest : std::max(newest, track.newestTime());
    }
    for (MovieTrack& track : tracks_) {
        if (track.isHolding() && newest - track.newestTime() >= fragmentTime) {
            track.releaseHeld();
        }
    }
}

void MovieFile::writeFragment() {
    std::vector<std::byte>& bytes = fragments_.sink().kept();
    fragments_.cutFragment();
    if (fileSize_ == 0) {
        fragments_.cutFragment();  // the first cut gave the header only
        reserveHeader(bytes);
    }
    const std::uint64_t begin = fileSize_;
    appendToFile(bytes);
    markInFile(bytes, begin);
    fragments_.sink().keepFrom(fragments_.sink().position());
    ++fragmentNumber_;
    for (MovieTrack& track : tracks_) {
        track.addToIndex();
    }
}

void MovieFile::reserveHeader(std::vector<std::byte>& bytes) {
    reservedHeader_ = requireBox(bytes, "ftyp").end();
    const ReservedSpace reserved = reservedBox();
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(reservedHeader_), reserved.begin(), reserved.end());
}

void MovieFile::markInFile(std::span<const std::byte> bytes, std::uint64_t begin) {
    const MovieBox fragment = requireBox(bytes, "moof");
    for (std::size_t number = 0; number < tracks_.size(); ++number) {
        const std::optional<std::size_t> media =
            findTrackMedia(bytes.subspan(fragment.offset, fragment.size), static_cast<std::uint32_t>(number + 1));
        if (media) {
            tracks_[number].markInFile(static_cast<std::int64_t>(begin + fragment.offset + *media));
        }
    }
}

void MovieFile::writeIndex() {
    const std::uint64_t mediaEnd = fileSize_;
    index_.sink().seek(static_cast<std::int64_t>(mediaEnd));
    index_.sink().keepFrom(static_cast<std::int64_t>(mediaEnd));
    index_.writeTrailer();
    appendToFile(index_.sink().kept());
    file_->sync();
    file_->overwrite(reservedHeader_, mediaDataHeader(mediaEnd - reservedHeader_));
    file_->sync();
}

void MovieFile::appendToFile(std::span<const std::byte> bytes) {
    try {
        file_->append(bytes);
        fileSize_ += bytes.size();
    } catch (const NSError&) {
        try {
            file_->truncate(fileSize_);
        } catch (const NSError&) {
            // The incomplete box at the end does no harm to most readers, and the first error says what is wrong.
        }
        throw;
    }
}

}  // namespace zorvane
