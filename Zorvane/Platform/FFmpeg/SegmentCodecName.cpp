#include "Zorvane/Platform/FFmpeg/SegmentCodecName.hpp"

#include <fmt/format.h>

#include <cstdint>
#include <string_view>

#include "Zorvane/Platform/FFmpeg/MovieBoxes.hpp"

namespace zorvane {
namespace {

using Bytes = std::span<const std::byte>;

constexpr std::size_t sampleTableHeader = 8;    // version, flags and the number of entries
constexpr std::size_t pictureDescription = 78;  // what a sample entry of video has before its boxes

/// The content of the first box of that type; empty if there is none.
Bytes contentOf(Bytes boxes, std::string_view type) {
    const std::optional<MovieBox> box = findBox(boxes, type);
    return box ? boxes.subspan(box->contentOffset(), box->size - MovieBox::headerSize) : Bytes();
}

Bytes behind(Bytes bytes, std::size_t count) {
    return bytes.size() > count ? bytes.subspan(count) : Bytes();
}

Bytes sampleEntries(Bytes initialization) {
    Bytes boxes = initialization;
    for (const std::string_view type : {"moov", "trak", "mdia", "minf", "stbl", "stsd"}) {
        boxes = contentOf(boxes, type);
    }
    return behind(boxes, sampleTableHeader);
}

unsigned byteAt(Bytes bytes, std::size_t index) {
    return std::to_integer<unsigned>(bytes[index]);
}

/// Profile, constraints and level, as the configuration record has them.
std::optional<std::string> h264Name(Bytes record) {
    if (record.size() < 4) {
        return std::nullopt;
    }
    return fmt::format("avc1.{:02x}{:02x}{:02x}", byteAt(record, 1), byteAt(record, 2), byteAt(record, 3));
}

std::uint32_t reversedBits(Bytes bytes) {
    std::uint32_t reversed = 0;
    for (unsigned bit = 0; bit < 32; ++bit) {
        const unsigned value = byteAt(bytes, bit / 8) >> (7 - bit % 8) & 1U;
        reversed |= value << bit;
    }
    return reversed;
}

/// As ISO/IEC 14496-15, Annex E, derives it from the configuration record.
std::optional<std::string> hevcName(Bytes record) {
    if (record.size() < 13) {
        return std::nullopt;
    }
    const unsigned profile = byteAt(record, 1);
    constexpr std::string_view spaces[] = {"", "A", "B", "C"};
    std::string name =
        fmt::format("hvc1.{}{}.{:X}.{}{}", spaces[profile >> 6U], profile & 0x1FU, reversedBits(record.subspan(2, 4)),
                    (profile & 0x20U) != 0 ? 'H' : 'L', byteAt(record, 12));
    Bytes constraints = record.subspan(6, 6);
    while (!constraints.empty() && constraints.back() == std::byte{0}) {
        constraints = constraints.first(constraints.size() - 1);
    }
    for (const std::byte constraint : constraints) {
        name += fmt::format(".{:X}", std::to_integer<unsigned>(constraint));
    }
    return name;
}

}  // namespace

std::optional<std::string> segmentCodecName(std::span<const std::byte> initialization) {
    const Bytes entries = sampleEntries(initialization);
    if (findBox(entries, "avc1")) {
        return h264Name(contentOf(behind(contentOf(entries, "avc1"), pictureDescription), "avcC"));
    }
    if (findBox(entries, "hvc1")) {
        return hevcName(contentOf(behind(contentOf(entries, "hvc1"), pictureDescription), "hvcC"));
    }
    if (findBox(entries, "mp4a")) {
        return "mp4a.40.2";  // the encoder makes no other profile
    }
    return std::nullopt;
}

}  // namespace zorvane
