#include "LiveLine.hpp"

#include <fmt/format.h>

#include "Figures.hpp"

namespace zorvane::cli {

std::string liveLine(const ZVRecorder::Statistics& statistics, double now, std::uintmax_t size) {
    std::string line = fmt::format("REC {}  ", clockText(now - statistics.recordFrom));
    if (hasPictures(statistics)) {
        line += frameCounts(statistics) + ", ";
    }
    return line + sizeText(size) + "  Ctrl-C stops";
}

bool hasPictures(const ZVRecorder::Statistics& statistics) {
    return statistics.framesWritten + statistics.framesDropped > 0;
}

std::string frameCounts(const ZVRecorder::Statistics& statistics) {
    return fmt::format("{} frames written, {} dropped, {} repeated", statistics.framesWritten, statistics.framesDropped,
                       statistics.framesRepeated);
}

}  // namespace zorvane::cli
