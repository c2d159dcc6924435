#include "SourcesCommand.hpp"

#include <algorithm>
#include <utility>

#include "Figures.hpp"
#include "LogOutput.hpp"
#include "SourceLists.hpp"
#include "SourceTable.hpp"
#include "SourceWatch.hpp"
#include "StandardError.hpp"
#include "StopSignal.hpp"
#include "WriteAll.hpp"
#include "Zorvane/Zorvane.hpp"

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

/// A desktop that can't be asked has nothing; the user may want to know why.
void tellWhyEmpty(const std::vector<SourceKind>& kinds, StandardError& output) {
    const bool concernsDesktop = std::ranges::any_of(
        kinds, [](SourceKind kind) { return kind == SourceKind::displays || kind == SourceKind::windows; });
    if (const auto failure = concernsDesktop ? ZVDisplay::discoveryFailure() : nullptr) {
        output.print("zorvane: " + printable(localizedDescription(failure)));
    }
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
    tellWhyEmpty(options.kinds, output);
    if (options.watch) {
        SourceWatch(options).run();
    } else {
        printResult(options.json ? listJSON(options.kinds) : listText(options.kinds));
    }
    return ExitStatus::complete;
}

}  // namespace zorvane::cli
