#include "Zorvane/Internal/SourceNotices.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/ZVError.hpp"

namespace zorvane {

SourceNotices::SourceNotices(std::string source, NoticeHandler onNotice, const Logger& logger)
    : source_(std::move(source)), onNotice_(std::move(onNotice)), logger_(logger) {}

void SourceNotices::interrupted(const std::exception_ptr& reason) const {
    logger_.warning("Source of sound was interrupted, recording silence until it resumes.", [&] {
        return LogMetadata{{"source", source_}, {"error", reason ? debugDescription(reason) : "nil"}};
    });
    tell(ZVRecordingNotice::Kind::sourceInterrupted, reason,
         fmt::format("No sound from '{}' for now. The recording goes on, with silence in its place.", source_));
}

void SourceNotices::resumed() const {
    logger_.info("Source of sound has resumed.", [&] { return LogMetadata{{"source", source_}}; });
    tell(ZVRecordingNotice::Kind::sourceResumed, nullptr, fmt::format("'{}' is back and being recorded.", source_));
}

void SourceNotices::tell(ZVRecordingNotice::Kind kind, std::exception_ptr reason, std::string userMessage) const {
    if (onNotice_) {
        onNotice_({kind, source_, std::move(reason), std::move(userMessage)});
    }
}

}  // namespace zorvane
