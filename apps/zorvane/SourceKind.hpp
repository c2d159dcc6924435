// The kinds of sources, as the command line names them.
#pragma once

#include <array>
#include <cstdint>

namespace zorvane::cli {

enum class SourceKind : std::uint8_t { displays, windows, cameras, microphones, applications, devices };

inline constexpr std::array allSourceKinds{SourceKind::displays,    SourceKind::windows,      SourceKind::cameras,
                                           SourceKind::microphones, SourceKind::applications, SourceKind::devices};

/// The name of the case.
constexpr const char* rawValue(SourceKind kind) {
    constexpr std::array names{"displays", "windows", "cameras", "microphones", "applications", "devices"};
    return names[static_cast<std::size_t>(kind)];
}

}  // namespace zorvane::cli
