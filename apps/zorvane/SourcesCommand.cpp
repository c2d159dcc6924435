#include "SourcesCommand.hpp"

#include <utility>

#include "LogOutput.hpp"
#include "SourceLists.hpp"
#include "SourceTable.hpp"
#include "SourceWatch.hpp"
#include "StandardError.hpp"
#include "StopSignal.hpp"
#include "WriteAll.hpp"

namespace zorvane::cli {
namespace {

std::string listText(const std::vector<SourceKind>& kinds) {
    std::string text;
    for (const SourceKind kind : kinds) {
        text += (text.empty() ? "" : "\n") + sourceTable(kind, currentSources(kind));
    }
    return text;
}

std::string listJSON(const std::vector<SourceKind>& kinds) {
    auto lists = nlohmann::ordered_json::object();
    for (const SourceKind kind : kinds) {
        auto& list = lists[rawValue(kind)] = nlohmann::ordered_json::array();
        for (SourceRow& row : currentSources(kind)) {
            list.push_back(std::move(row.properties));
        }
    }
    return lists.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace

ExitStatus sources(const SourcesOptions& options) {
    if (options.watch) {
        StopSignal::block();
    }
    // Never destroyed: threads of the library may log while the process exits.
    static auto& output = *new StandardError;
    const auto log = showLog(options.logLevel, output);
    ZVPlatform::use(options.platform);
    if (options.watch) {
        SourceWatch(options).run();
    } else {
        printResult(options.json ? listJSON(options.kinds) : listText(options.kinds));
    }
    return ExitStatus::complete;
}

}  // namespace zorvane::cli
