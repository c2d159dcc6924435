#include "Zorvane/Internal/SourceNotices.hpp"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

/// What a source gives, and what its file holds without it.
struct Loss {
    std::string_view media;
    std::string_view mediaInLog;
    std::string_view insteadInLog;
    std::string_view instead;
};

Loss lossOf(AVMediaType media) {
    switch (media) {
        case AVMediaType::audio:
            return {"sound", "sound", "recording silence", "silence"};
        case AVMediaType::video:
            return {"picture", "pictures", "its last picture lasts", "the last picture"};
        case AVMediaType::muxed:
            break;
    }
    return {"picture or sound", "pictures and sound", "its last picture and silence last",
            "the last picture and silence"};
}

}  // namespace

SourceNotices::SourceNotices(std::string source, AVMediaType media, NoticeHandler onNotice, const Logger& logger)
    : source_(std::move(source)), media_(media), onNotice_(std::move(onNotice)), logger_(logger) {}

void SourceNotices::interrupted(const std::exception_ptr& reason) const {
    const Loss loss = lossOf(media_);
    const auto message = [&] {
        return fmt::format("Source of {} was interrupted, {} until it resumes.", loss.mediaInLog, loss.insteadInLog);
    };
    logger_.warning(message, [&] {
        return LogMetadata{{"source", source_}, {"error", reason ? debugDescription(reason) : "nil"}};
    });
    tell(ZVRecordingNotice::Kind::sourceInterrupted, reason,
         fmt::format("No {} from '{}' for now. The recording goes on, with {} in its place.", loss.media, source_,
                     loss.instead));
}

void SourceNotices::resumed() const {
    const auto message = [&] { return fmt::format("Source of {} has resumed.", lossOf(media_).mediaInLog); };
    logger_.info(message, [&] { return LogMetadata{{"source", source_}}; });
    tell(ZVRecordingNotice::Kind::sourceResumed, nullptr, fmt::format("'{}' is back and being recorded.", source_));
}

void SourceNotices::tell(ZVRecordingNotice::Kind kind, std::exception_ptr reason, std::string userMessage) const {
    if (onNotice_) {
        onNotice_({kind, source_, std::move(reason), std::move(userMessage)});
    }
}

}  // namespace zorvane
