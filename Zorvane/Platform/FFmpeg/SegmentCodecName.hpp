// What an initialization segment says of its codec.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace zorvane {

/// The codec of the first track as RFC 6381 names it, such as "avc1.640028", "hvc1.2.4.L120.B0" or "mp4a.40.2"; nothing
/// for other codecs.
std::optional<std::string> segmentCodecName(std::span<const std::byte> initialization);

}  // namespace zorvane
