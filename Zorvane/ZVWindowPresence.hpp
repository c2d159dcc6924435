// Which window was frontmost during a recording, and where: the elements of the side file "top-windows.json".
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Zorvane/ZVTime.hpp"

namespace zorvane {

/// A window that is in front from `time` on. Its place and size are fractions of the recorded area, whose top left
/// corner is (0, 0) and whose bottom right corner is (1, 1); a window may reach beyond.
struct ZVWindowInfo {
    ZVTime time;  ///< since the recording's start
    std::uint32_t windowID = 0;
    std::optional<std::string> windowTitle;
    std::optional<std::int32_t> applicationID;  ///< process id
    std::optional<std::string> applicationName;
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const ZVWindowInfo&) const = default;
};

/// No window is in front from `time` on.
struct ZVWindowAbsence {
    ZVTime time;  ///< since the recording's start

    bool operator==(const ZVWindowAbsence&) const = default;
};

/// One of the two.
class ZVWindowPresence {
  public:
    using Payload = std::variant<ZVWindowInfo, ZVWindowAbsence>;

    /// What "type" says in JSON, in the order of the payloads.
    enum class TypeValue : std::uint8_t { present, absent };

    explicit ZVWindowPresence(ZVWindowInfo info) : payload_(std::move(info)) {}
    explicit ZVWindowPresence(ZVWindowAbsence absence) : payload_(std::move(absence)) {}

    const Payload& payload() const { return payload_; }
    TypeValue type() const { return static_cast<TypeValue>(payload_.index()); }
    const ZVTime& time() const;

    /// As those of `ZVInputEvent`.
    std::string toJSON() const;
    static ZVWindowPresence fromJSON(std::string_view json);
    static std::vector<ZVWindowPresence> read(const std::filesystem::path& sideFile);
    static void forEach(const std::filesystem::path& sideFile, const std::function<void(ZVWindowPresence)>& body);

  private:
    Payload payload_;
};

}  // namespace zorvane
