// What the FFmpeg libraries report, as errors of this library.
#pragma once

#include <string_view>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {

/// The codes of this domain are those of the FFmpeg libraries.
inline constexpr std::string_view FFmpegErrorDomain = "FFmpegErrorDomain";

/// An error for a negative result of an FFmpeg function. `action` completes "Unable to". Error numbers of the operating
/// system stay in their own domain.
NSError ffmpegError(int code, std::string_view action);

/// Throws that error if the code is negative, else returns the code.
int requireFFmpeg(int code, std::string_view action);

}  // namespace zorvane
