#include "RecordEvents.hpp"

#include <system_error>

#include <nlohmann/json.hpp>

#include "RecordReport.hpp"
#include "WriteAll.hpp"

namespace zorvane::cli {
namespace {

using JSON = nlohmann::ordered_json;

/// Names in the file system need not be UTF-8; JSON must.
std::string lineOf(const JSON& event) {
    return event.dump(-1, ' ', false, JSON::error_handler_t::replace) + "\n";
}

const char* nameOf(ZVRecorder::Notice::Kind kind) {
    switch (kind) {
        case ZVRecorder::Notice::Kind::sourceInterrupted:
            return "interrupted";
        case ZVRecorder::Notice::Kind::sourceResumed:
            return "resumed";
        case ZVRecorder::Notice::Kind::segmentLost:
            return "lost";
    }
    return "";
}

}  // namespace

void RecordEvents::started(const std::filesystem::path& bundle, double recordFrom) {
    print(lineOf({{"event", "started"}, {"bundle", bundle.string()}, {"recordFrom", recordFrom}}));
}

void RecordEvents::segment(const std::filesystem::path& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    JSON event{{"event", "segment"}, {"filename", file.filename().string()}};
    event["size"] = error ? JSON(nullptr) : JSON(size);
    print(lineOf(event));
}

void RecordEvents::notice(const ZVRecorder::Notice& notice) {
    print(lineOf({{"event", nameOf(notice.kind)}, {"source", notice.source}, {"message", notice.userMessage}}));
}

void RecordEvents::ended(const RecordOutcome& outcome) {
    print(recordJSON(outcome, JSONForm::eventLine));
    const std::lock_guard lock(mutex_);
    if (error_) {
        std::rethrow_exception(error_);
    }
}

void RecordEvents::print(const std::string& line) {
    const std::lock_guard lock(mutex_);
    try {
        printResult(line);
    } catch (...) {
        error_ = std::current_exception();
    }
}

}  // namespace zorvane::cli
