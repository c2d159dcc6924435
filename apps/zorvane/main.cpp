// The command line of Zorvane: a host like any other, on public headers only.
#include <sys/stat.h>

#include <csignal>
#include <exception>
#include <string>
#include <variant>

#include "CommandLine.hpp"
#include "InfoCommand.hpp"
#include "PermissionsCommand.hpp"
#include "RecordCommand.hpp"
#include "SourcesCommand.hpp"
#include "StandardError.hpp"
#include "WriteAll.hpp"

namespace zorvane::cli {
namespace {

ExitStatus run(const RecordOptions& options) {
    return record(options);
}
ExitStatus run(const SourcesOptions& options) {
    return sources(options);
}
ExitStatus run(const InfoOptions& options) {
    return info(options);
}
ExitStatus run(const PermissionsOptions& options) {
    return permissions(options);
}
ExitStatus run(ExitStatus status) {
    return status;
}

void setUpProcess() {
    occupyStandardDescriptors();
    umask(077);  // what was on the screen is the user's own
    // A full disk limit and a closed pipe are told by the write that meets them.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

ExitStatus runCommandLine(int argumentCount, const char* const* arguments) {
    try {
        const Command command = parseCommandLine(argumentCount, arguments);
        return std::visit([](const auto& chosen) { return run(chosen); }, command);
    } catch (const std::exception& error) {
        StandardError().print(std::string("zorvane: ") + error.what());
        return ExitStatus::savedWithErrors;
    }
}

}  // namespace
}  // namespace zorvane::cli

int main(int argumentCount, char** arguments) {
    zorvane::cli::setUpProcess();
    return static_cast<int>(zorvane::cli::runCommandLine(argumentCount, arguments));
}
