// What goes wrong with media, beyond what the operating system reports.
#pragma once

#include <cstdint>
#include <string_view>

namespace zorvane {

inline constexpr std::string_view AVFoundationErrorDomain = "AVFoundationErrorDomain";

/// Codes of `AVFoundationErrorDomain`.
inline constexpr std::int64_t AVErrorUnknown = -11800;
inline constexpr std::int64_t AVErrorNoDataCaptured = -11805;
inline constexpr std::int64_t AVErrorDeviceWasDisconnected = -11808;
inline constexpr std::int64_t AVErrorDeviceNotConnected = -11814;
inline constexpr std::int64_t AVErrorDeviceInUseByAnotherApplication = -11815;
inline constexpr std::int64_t AVErrorEncoderNotFound = -11834;

}  // namespace zorvane
