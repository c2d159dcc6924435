#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

#include <algorithm>
#include <cmath>
#include <compare>
#include <limits>

namespace zorvane {
namespace {

constexpr CMVideoDimensions wantedSize{1920, 1080};
constexpr PipeWireFrameRate wantedRate{.frames = 30, .seconds = 1};
constexpr double slowRate = 23.9;  // 24000/1001 isn't slow

std::int32_t nearestSide(std::int32_t wanted, std::int32_t smallest, std::int32_t largest, std::int32_t step) {
    if (wanted <= smallest || largest <= smallest) {
        return smallest;
    }
    const std::int32_t reach = std::min(wanted, largest) - smallest;
    return smallest + reach / step * step;
}

PipeWireFrameRate nearestRate(const PipeWireFrameRate& slowest, const PipeWireFrameRate& fastest) {
    if (fastest.perSecond() <= wantedRate.perSecond()) {
        return fastest;
    }
    return slowest.perSecond() >= wantedRate.perSecond() ? slowest : wantedRate;
}

PipeWireVideoFormat bestOf(const PipeWireVideoOffer& offer) {
    const CMVideoDimensions size{
        nearestSide(wantedSize.width, offer.smallest.width, offer.largest.width, offer.step.width),
        nearestSide(wantedSize.height, offer.smallest.height, offer.largest.height, offer.step.height)};
    return {.encoding = *offer.encoding, .size = size, .rate = nearestRate(offer.slowest, offer.fastest)};
}

/// The smaller, the better; what stands first counts most.
struct Rank {
    bool isSlow;
    bool isTooLarge;
    double areaDistance;
    double rateDistance;
    bool isJPEG;

    auto operator<=>(const Rank&) const = default;
};

Rank rankOf(const PipeWireVideoFormat& format) {
    const double area = static_cast<double>(format.size.width) * format.size.height;
    const bool isTooLarge = format.size.width > wantedSize.width || format.size.height > wantedSize.height;
    const double rate = format.rate.perSecond();
    return {.isSlow = format.rate.isKnown() && rate < slowRate,
            .isTooLarge = isTooLarge,
            .areaDistance = isTooLarge ? area : -area,
            .rateDistance = format.rate.isKnown() ? std::abs(rate - wantedRate.perSecond())
                                                  : std::numeric_limits<double>::infinity(),
            .isJPEG = format.encoding == AVVideoSourceFormat::jpeg};
}

}  // namespace

CMTime PipeWireFrameRate::frameDuration() const {
    constexpr std::uint32_t most = std::numeric_limits<std::int32_t>::max();
    return isKnown() && frames <= most ? CMTime::make(seconds, static_cast<std::int32_t>(frames)) : kCMTimeInvalid;
}

std::optional<PipeWireVideoFormat> chooseVideoFormat(const std::vector<PipeWireVideoOffer>& offers) {
    std::optional<PipeWireVideoFormat> chosen;
    for (const PipeWireVideoOffer& offer : offers) {
        if (offer.encoding) {
            const PipeWireVideoFormat candidate = bestOf(offer);
            if (!chosen || rankOf(candidate) < rankOf(*chosen)) {
                chosen = candidate;
            }
        }
    }
    return chosen;
}

}  // namespace zorvane
