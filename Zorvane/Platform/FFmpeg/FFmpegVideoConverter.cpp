#include "Zorvane/Platform/FFmpeg/FFmpegVideoConverter.hpp"

#include <fmt/format.h>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/JPEGVideoConverter.hpp"
#include "Zorvane/Platform/FFmpeg/RawVideoConverter.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

bool isUsable(std::int32_t length) {
    constexpr std::int32_t longest = 16384;
    return length >= 1 && length <= longest;
}

}  // namespace

std::unique_ptr<AVVideoConverter> FFmpegVideoConverting::makeConverter(AVVideoSourceFormat format,
                                                                       CMVideoDimensions size) {
    if (!isUsable(size.width) || !isUsable(size.height)) {
        throw NSError(
            AVFoundationErrorDomain, AVErrorUnknown,
            {fmt::format("Unable to convert pictures of {} x {} pixels.", size.width, size.height), nullptr, {}});
    }
    if (format == AVVideoSourceFormat::jpeg) {
        return std::make_unique<JPEGVideoConverter>(size);
    }
    return std::make_unique<RawVideoConverter>(format, size);
}

}  // namespace zorvane
