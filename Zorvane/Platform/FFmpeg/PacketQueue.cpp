#include "Zorvane/Platform/FFmpeg/PacketQueue.hpp"

#include <algorithm>
#include <utility>

extern "C" {
#include <libavcodec/packet.h>
}

namespace zorvane {

std::int64_t PacketQueue::tickAt(std::size_t index) const {
    return packets_[index].content->pts;
}

std::optional<std::int64_t> PacketQueue::firstWaitingTick() const {
    if (inFile_ == packets_.size()) {
        return std::nullopt;
    }
    return tickAt(inFile_);
}

void PacketQueue::append(AVPacket& content) {
    if (spares_.empty()) {
        spares_.push_back(makePacket());
    }
    Packet packet;
    packet.content = std::move(spares_.back());
    spares_.pop_back();
    av_packet_move_ref(packet.content.get(), &content);
    packets_.push_back(std::move(packet));
}

void PacketQueue::dropLast() {
    recycle(packets_.back());
    packets_.pop_back();
    inFile_ = std::min(inFile_, packets_.size());
    inFragment_ = std::min(inFragment_, packets_.size());
}

void PacketQueue::dropFirst(std::size_t count) {
    const auto end = packets_.begin() + static_cast<std::ptrdiff_t>(count);
    std::for_each(packets_.begin(), end, [this](Packet& packet) { recycle(packet); });
    packets_.erase(packets_.begin(), end);
    inFile_ -= std::min(inFile_, count);
    inFragment_ -= std::min(inFragment_, count);
}

void PacketQueue::markInFile(std::int64_t mediaPosition) {
    if (inFile_ < inFragment_) {
        packets_[inFile_].mediaPosition = mediaPosition;
        inFile_ = inFragment_;
    }
}

void PacketQueue::recycle(Packet& packet) {
    av_packet_unref(packet.content.get());
    spares_.push_back(std::move(packet.content));
}

}  // namespace zorvane
