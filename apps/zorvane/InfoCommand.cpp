#include "InfoCommand.hpp"

#include <exception>
#include <optional>

#include <fmt/format.h>

#include "BundleReport.hpp"
#include "Figures.hpp"
#include "StandardError.hpp"
#include "WriteAll.hpp"

namespace zorvane::cli {
namespace {

std::optional<BundleReport> readOrTell(const std::filesystem::path& bundle, StandardError& output) {
    try {
        return readBundle(bundle);
    } catch (const std::exception& error) {
        output.print("zorvane: " + printable(error.what()));
        return std::nullopt;
    }
}

}  // namespace

ExitStatus info(const InfoOptions& options) {
    StandardError output;
    const auto report = readOrTell(options.bundle, output);
    if (!report) {
        return ExitStatus::nothingRecorded;
    }
    if (!report->isVersionKnown()) {
        output.print(
            fmt::format("zorvane: The manifest has version {}, which this program doesn't know. What follows may "
                        "not be all there is.",
                        report->version));
    }
    printResult(options.json ? bundleJSON(*report) : bundleText(*report));
    return report->isSound() ? ExitStatus::complete : ExitStatus::savedWithErrors;
}

}  // namespace zorvane::cli
