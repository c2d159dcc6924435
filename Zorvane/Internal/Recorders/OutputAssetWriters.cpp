#include "Zorvane/Internal/Recorders/OutputAssetWriters.hpp"

#include "Zorvane/Internal/AVAssetWriterSafeCalls.hpp"
#include "Zorvane/Platform/AVFoundation/AVMediaWriting.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

AVFileType fileTypeFor(const std::filesystem::path& url) {
    return url.extension() == ".mp4" ? AVFileType::mpeg4 : AVFileType::quickTimeMovie;
}

}  // namespace

SingleFileOutputAssetWriters::SingleFileOutputAssetWriters(const std::filesystem::path& url)
    : sharedAssetWriter_(Platform::current()->mediaWriting->makeAssetWriter(url, fileTypeFor(url))) {}

void SingleFileOutputAssetWriters::startWriting() {
    zorvane::startWriting(*sharedAssetWriter_);
}

Task<std::vector<std::filesystem::path>> SingleFileOutputAssetWriters::finishWriting() {
    co_await safe_finishWriting(sharedAssetWriter_);
    if (const std::exception_ptr error = sharedAssetWriter_->error()) {
        std::rethrow_exception(error);
    }
    std::vector<std::filesystem::path> written;
    written.push_back(sharedAssetWriter_->outputURL());
    co_return written;
}

void startWriting(AVAssetWriter& writer) {
    if (safe_startWriting(writer)) {
        return;
    }
    if (const std::exception_ptr error = writer.error()) {
        std::rethrow_exception(error);
    }
    throw ZVError::internalError("Couldn't start writing to AVAssetWriter");
}

}  // namespace zorvane
