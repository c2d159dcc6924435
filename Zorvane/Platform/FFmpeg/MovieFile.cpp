#include "Zorvane/Platform/FFmpeg/MovieFile.hpp"

#include <algorithm>
#include <limits>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/MovieBoxes.hpp"
#include "Zorvane/Platform/FFmpeg/VideoTimeline.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

extern "C" {
#include <libavcodec/packet.h>
}

namespace zorvane {
namespace {

/// A fragment costs about a hundred bytes beside its media, and what is not in a fragment yet is lost in a crash.
constexpr std::int64_t fragmentTicks = videoTimescale * 4 / 10;

/// Of a picture that nothing has followed yet. A still screen gives a picture each second.
constexpr std::int64_t assumedDuration = videoTimescale * 9 / 10;

void setTick(AVPacket& packet, std::int64_t tick) {
    packet.pts = tick;
    packet.dts = tick;
}

constexpr const char* fragmentFlags = "frag_custom+delay_moov+default_base_moof+skip_trailer";

/// A fragment's boxes and the first box of the file come from a muxer that was told what to write.
MovieBox requireBox(std::span<const std::byte> boxes, std::string_view type) {
    const std::optional<MovieBox> box = findBox(boxes, type);
    if (!box) {
        throw NSError(AVFoundationErrorDomain, AVErrorUnknown, {"The movie's muxer left out a box.", nullptr, {}});
    }
    return *box;
}

}  // namespace

MovieFile::MovieFile(std::unique_ptr<OutputFile> file, AVFileType fileType, const AVCodecParameters& video)
    : file_(std::move(file)), fragments_(fileType, video, fragmentFlags), index_(fileType, video, nullptr) {
    fragments_.sink().keepFrom(0);
    index_.sink().keepFrom(std::numeric_limits<std::int64_t>::max());
}

void MovieFile::append(AVPacket& packet) {
    if (!packets_.empty()) {
        // Where the muxer is to be told of a jump there must be a tick between the two.
        setTick(packet, std::max(packet.pts, packets_.back().content->pts + (jumps_ ? 2 : 1)));
        addLastToFragment(packet.pts - packets_.back().content->pts);
        if (isFragmentLongEnough(packet.pts)) {
            writeFragment();
        }
    }
    packets_.push_back(takePacket(packet));
    addToIndex(finalCount());
}

void MovieFile::replaceLast(AVPacket& packet) {
    if (packets_.back().isInFragment) {
        append(packet);  // too late: both are there, the older one for a moment
        return;
    }
    dropLast();
    packets_.push_back(takePacket(packet));
}

void MovieFile::flush() {
    if (!waitingFragment()) {
        return;
    }
    addLastToFragment(assumedDuration);
    writeFragment();
    jumps_ = true;
}

std::optional<std::uint64_t> MovieFile::waitingFragment() const {
    if (packets_.empty() || packets_.back().isInFile) {
        return std::nullopt;
    }
    return fragmentNumber_;
}

void MovieFile::finish(std::optional<std::int64_t> endTick) {
    while (endTick && packets_.size() > 1 && packets_.back().content->pts >= *endTick) {
        dropLast();
    }
    addLastToFragment(lastDuration(endTick));
    if (waitingFragment()) {
        writeFragment();
    }
    addToIndex(packets_.size());
    writeIndex();
    file_->close();
}

MovieFile::Packet MovieFile::takePacket(AVPacket& content) {
    if (spares_.empty()) {
        spares_.push_back(makePacket());
    }
    Packet packet;
    packet.content = std::move(spares_.back());
    spares_.pop_back();
    av_packet_move_ref(packet.content.get(), &content);
    return packet;
}

void MovieFile::dropLast() {
    recycle(packets_.back());
    packets_.pop_back();
}

void MovieFile::recycle(Packet& packet) {
    av_packet_unref(packet.content.get());
    spares_.push_back(std::move(packet.content));
}

// A packet that `flush` has written stays as it is in there.
void MovieFile::addLastToFragment(std::int64_t duration) {
    Packet& last = packets_.back();
    last.content->duration = duration;
    if (!last.isInFragment) {
        if (std::exchange(jumps_, false)) {
            fragments_.jumpTo(last.content->pts);
        }
        fragments_.write(*last.content);
        last.isInFragment = true;
    }
}

std::int64_t MovieFile::lastDuration(std::optional<std::int64_t> endTick) const {
    const std::size_t count = packets_.size();
    const std::int64_t last = packets_.back().content->pts;
    if (endTick) {
        return std::max<std::int64_t>(*endTick - last, 1);
    }
    return count > 1 ? last - packets_[count - 2].content->pts : assumedDuration;
}

bool MovieFile::isFragmentLongEnough(std::int64_t tick) const {
    for (const Packet& packet : packets_) {
        if (!packet.isInFile) {
            return tick - packet.content->pts >= fragmentTicks;
        }
    }
    return false;
}

void MovieFile::writeFragment() {
    std::vector<std::byte>& bytes = fragments_.sink().kept();
    fragments_.cutFragment();
    if (fileSize_ == 0) {
        fragments_.cutFragment();  // the first cut gave the header only
        reservedHeader_ = requireBox(bytes, "ftyp").end();
        const LargeBoxHeader reserved = reservedBox();
        bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(reservedHeader_), reserved.begin(), reserved.end());
    }
    const std::size_t mediaOffset = requireBox(bytes, "mdat").contentOffset();
    std::optional<std::int64_t> mediaPosition = static_cast<std::int64_t>(fileSize_ + mediaOffset);
    appendToFile(bytes);
    fragments_.sink().keepFrom(fragments_.sink().position());
    ++fragmentNumber_;
    for (Packet& packet : packets_) {
        if (packet.isInFragment && !packet.isInFile) {
            packet.isInFile = true;
            packet.mediaPosition = std::exchange(mediaPosition, std::nullopt);
        }
    }
}

// The index can't be taken back. So a packet waits until two newer ones are in the file: should the end turn out to lie
// before all that is not in the file, and before a picture that `flush` wrote, this packet is the last one.
std::size_t MovieFile::finalCount() const {
    std::size_t count = 0;
    while (count + 2 < packets_.size() && packets_[count + 2].isInFile) {
        ++count;
    }
    return count;
}

void MovieFile::addToIndex(std::size_t count) {
    const auto end = packets_.begin() + static_cast<std::ptrdiff_t>(count);
    for (auto packet = packets_.begin(); packet != end; ++packet) {
        if (packet->mediaPosition) {
            index_.sink().seek(*packet->mediaPosition);
        }
        index_.write(*packet->content);
        recycle(*packet);
    }
    packets_.erase(packets_.begin(), end);
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
