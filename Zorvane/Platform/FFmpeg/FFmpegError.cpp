#include "Zorvane/Platform/FFmpeg/FFmpegError.hpp"

#include <fmt/format.h>

extern "C" {
#include <libavutil/error.h>
}

namespace zorvane {
namespace {

/// FFmpeg's own codes are made of four letters, far beyond the numbers of the operating system.
bool isErrorNumber(int code) {
    return AVUNERROR(code) > 0 && AVUNERROR(code) < 4096;
}

}  // namespace

NSError ffmpegError(int code, std::string_view action) {
    if (isErrorNumber(code)) {
        return NSError::posix(AVUNERROR(code), action);
    }
    char reason[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, reason, sizeof(reason));
    return {FFmpegErrorDomain, code, {fmt::format("Unable to {}: {}.", action, reason), nullptr, {}}};
}

int requireFFmpeg(int code, std::string_view action) {
    if (code < 0) {
        throw ffmpegError(code, action);
    }
    return code;
}

}  // namespace zorvane
