#include "LiveLine.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <fmt/format.h>

#include "Figures.hpp"

namespace zorvane::cli {
namespace {

constexpr std::size_t meterCells = 10;
constexpr double meterFloor = -60;  // decibels below full scale that the empty meter stands for
constexpr double clipping = 0.999;  // of full scale: the sound is cut off

}  // namespace

std::string liveLine(const ZVRecorder::Statistics& statistics, double now, std::uintmax_t size) {
    std::string line = fmt::format("REC {}  ", clockText(now - statistics.recordFrom));
    for (const ZVRecorder::SoundLevel& level : statistics.soundLevels) {
        line += fmt::format("{} {}  ", level.source, levelMeter(level.peak));
    }
    if (hasPictures(statistics)) {
        line += frameCounts(statistics) + ", ";
    }
    return line + sizeText(size) + "  Ctrl-C stops";
}

std::string levelMeter(double peak) {
    const double decibels = peak > 0 ? std::max(20 * std::log10(peak), meterFloor) : meterFloor;
    const auto lit = static_cast<std::size_t>(std::lround(meterCells * (1 - decibels / meterFloor)));
    std::string cells(meterCells, ' ');
    std::fill_n(cells.begin(), lit, peak >= clipping ? '!' : '#');
    return "[" + cells + "]";
}

bool hasPictures(const ZVRecorder::Statistics& statistics) {
    return statistics.framesWritten + statistics.framesDropped > 0;
}

std::string frameCounts(const ZVRecorder::Statistics& statistics) {
    return fmt::format("{} frames written, {} dropped, {} repeated", statistics.framesWritten, statistics.framesDropped,
                       statistics.framesRepeated);
}

}  // namespace zorvane::cli
