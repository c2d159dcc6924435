#include "RecordReport.hpp"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "BundleLocation.hpp"
#include "Figures.hpp"
#include "LiveLine.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane::cli {
namespace {

using JSON = nlohmann::ordered_json;

JSON finite(double seconds) {
    return std::isfinite(seconds) ? JSON(seconds) : JSON(nullptr);
}

JSON fileJSON(const ZVBundleInfo::FileAsset& file) {
    JSON json{{"type", zorvane::rawValue(file.type)}, {"filename", file.filename}};
    if (file.related) {
        json["related"] = *file.related;
    }
    return json;
}

JSON errorJSON(const std::exception_ptr& thrown) {
    const ZVError error = ZVError::_uncaught(thrown);
    return {{"errorGroup", error.errorGroup()},
            {"message", error.debugDescription()},
            {"userMessage", localizedDescription(thrown)}};
}

}  // namespace

std::vector<std::string> unclosedMedia(const RecordOutcome& outcome) {
    if (outcome.status == RecordOutcome::Status::failed) {
        return {};  // what is there, if anything, isn't ours
    }
    return unlistedMedia(outcome.result.bundleURL, outcome.result.bundleInfo);
}

std::string recordJSON(const RecordOutcome& outcome, JSONForm form) {
    JSON files = JSON::array();
    for (const auto& file : outcome.result.bundleInfo.files) {
        files.push_back(fileJSON(file));
    }
    JSON errors = JSON::array();
    for (const auto& error : outcome.errors) {
        errors.push_back(errorJSON(error));
    }
    JSON json = JSON::object();
    if (form == JSONForm::eventLine) {
        json["event"] = "ended";
    }
    json.update({{"bundle", outcome.result.bundleURL.string()},
                 {"status", rawValue(outcome.status)},
                 {"recordFrom", finite(outcome.statistics.recordFrom)},
                 {"recordUntil", finite(outcome.statistics.recordUntil)},
                 {"files", std::move(files)},
                 {"unlisted", unclosedMedia(outcome)},
                 {"errors", std::move(errors)},
                 {"dropped", outcome.statistics.framesDropped},
                 {"repeated", outcome.statistics.framesRepeated}});
    // Names in the file system need not be UTF-8; JSON must.
    const int indent = form == JSONForm::eventLine ? -1 : 2;
    return json.dump(indent, ' ', false, JSON::error_handler_t::replace) + "\n";
}

std::string recordSummary(const RecordOutcome& outcome) {
    const std::string size = sizeText(bundleSize(outcome.result.bundleURL));
    if (!hasPictures(outcome.statistics)) {
        return fmt::format("Recorded {:.3f} s, {}.", outcome.duration(), size);
    }
    return fmt::format("Recorded {:.3f} s: {}, {}.", outcome.duration(), frameCounts(outcome.statistics), size);
}

bool isUnexplained(const std::exception_ptr& error) {
    return !ZVError::_uncaught(error).userMessage();
}

std::string userText(const std::exception_ptr& error) {
    std::string text = localizedDescription(error);
    std::ranges::replace(text, '\n', ' ');
    return printable(text);
}

}  // namespace zorvane::cli
