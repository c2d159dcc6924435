#include "BundleReport.hpp"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "BundleLocation.hpp"

namespace zorvane::cli {
namespace {

namespace fs = std::filesystem;

constexpr auto manifestName = "zorvane.json";

std::string filesThatMayPlay(const fs::path& bundle) {
    const auto names = unlistedMedia(bundle, ZVBundleInfo::empty);
    return names.empty() ? "" : fmt::format(" Its recording was cut off; try to play {}.", fmt::join(names, ", "));
}

std::string readManifest(const fs::path& bundle) {
    std::error_code error;
    if (!fs::is_directory(bundle, error)) {
        throw std::runtime_error(fmt::format("\"{}\" is no bundle: there is no such directory.", bundle.string()));
    }
    const fs::path path = bundle / manifestName;
    if (!fs::exists(path, error) && !error) {
        throw std::runtime_error(
            fmt::format("\"{}\" has no {}.{}", bundle.string(), manifestName, filesThatMayPlay(bundle)));
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        throw std::runtime_error(
            fmt::format("Can't read \"{}\": {}.", path.string(), std::generic_category().message(errno)));
    }
    return bytes;
}

ZVBundleInfo decodeManifest(const fs::path& bundle) {
    const std::string bytes = readManifest(bundle);
    try {
        return ZVBundleInfo::decode(bytes);
    } catch (const std::exception& error) {
        throw std::runtime_error(
            fmt::format("\"{}\" can't be understood: {}", (bundle / manifestName).string(), error.what()));
    }
}

void readContents(const fs::path& path, FileReport& report) {
    switch (report.asset.type) {
        case ZVBundleInfo::FileAssetType::mouse:
            report.input = readInputSummary(path);
            break;
        case ZVBundleInfo::FileAssetType::topWindow:
            report.topWindows = readTopWindowSummary(path);
            break;
        default:
            report.media = ZVMediaInfo::read(path);
    }
}

FileReport readFile(const fs::path& bundle, const ZVBundleInfo::FileAsset& asset) {
    FileReport report{.asset = asset};
    const fs::path path = bundle / asset.filename;
    std::error_code error;
    const auto size = fs::file_size(path, error);
    if (error) {
        report.error = error == std::errc::no_such_file_or_directory ? "The file is missing." : error.message() + ".";
        return report;
    }
    report.size = size;
    try {
        readContents(path, report);
    } catch (const std::exception& problem) {
        report.error = problem.what();
    }
    return report;
}

}  // namespace

bool BundleReport::isSound() const {
    return std::ranges::none_of(files, [](const FileReport& file) { return file.error.has_value(); }) &&
           std::ranges::none_of(streams, [](const StreamReport& stream) { return stream.lost > 0; });
}

BundleReport readBundle(const fs::path& bundle) {
    const ZVBundleInfo manifest = decodeManifest(bundle);
    BundleReport report{bundle, manifest.version, {}, readStreams(bundle), unlistedMedia(bundle, manifest)};
    for (const auto& asset : manifest.files) {
        report.files.push_back(readFile(bundle, asset));
    }
    return report;
}

}  // namespace zorvane::cli
