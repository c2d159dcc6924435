// Formats of video in PipeWire's own form.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

struct spa_pod;

namespace zorvane {

/// What an `EnumFormat` parameter offers, with lists spread out. Empty for one that isn't video. A size or a rate that
/// may be anything is what the camera prefers; what isn't stated is anything.
std::vector<PipeWireVideoOffer> parseVideoOffers(const spa_pod* parameter);

/// A `Format` parameter; nothing if its pictures can't be converted.
std::optional<PipeWireVideoFormat> parseVideoFormat(const spa_pod* parameter);

/// Parameters of one who takes pictures, in memory of their own.
class PipeWireVideoPods {
  public:
    struct ForBuffers {};

    /// The formats to connect with: the wanted one first, then anything that can be converted.
    explicit PipeWireVideoPods(const std::optional<PipeWireVideoFormat>& wanted);
    /// What is needed of the buffers once the format is known.
    explicit PipeWireVideoPods(ForBuffers);
    PipeWireVideoPods(const PipeWireVideoPods&) = delete;
    PipeWireVideoPods& operator=(const PipeWireVideoPods&) = delete;

    const spa_pod** get() { return pods_.data(); }
    std::uint32_t count() const { return static_cast<std::uint32_t>(pods_.size()); }

  private:
    class Builder;

    alignas(8) std::array<std::uint8_t, 4096> memory_{};
    std::vector<const spa_pod*> pods_;
};

}  // namespace zorvane
