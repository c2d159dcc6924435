#include "LiveLine.hpp"

#include <fmt/format.h>

#include "Figures.hpp"

namespace zorvane::cli {

std::string liveLine(const ZVRecorder::Statistics& statistics, double now, std::uintmax_t size) {
    return fmt::format("REC {}  {}, {}  Ctrl-C stops", clockText(now - statistics.recordFrom), frameCounts(statistics),
                       sizeText(size));
}

std::string frameCounts(const ZVRecorder::Statistics& statistics) {
    return fmt::format("{} frames written, {} dropped, {} repeated", statistics.framesWritten, statistics.framesDropped,
                       statistics.framesRepeated);
}

}  // namespace zorvane::cli
