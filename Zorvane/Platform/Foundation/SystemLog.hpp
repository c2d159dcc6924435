// The operating system's log, as the place where messages go by default.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace zorvane {

/// The severities that a system log tells apart, from the least severe.
enum class SystemLogType { debug, info, notice, error };

/// One message. Refers to the caller's texts for the length of a call.
struct SystemLogEntry {
    SystemLogType type;
    /// The whole line; the log itself adds the time and the severity.
    std::string_view text;
    /// The same once more as fields, for logs that hold fields.
    std::string_view category;
    const std::map<std::string, std::string>& metadata;
};

/// Both operations may be called on any thread, and throw nothing that has to do with the log.
class SystemLog {
  public:
    virtual ~SystemLog() = default;

    /// Whether messages of that type are kept at all; the caller then spares itself composing them.
    virtual bool isEnabled(SystemLogType type) const = 0;
    /// A message that the log won't take is lost.
    virtual void write(const SystemLogEntry& entry) = 0;
};

/// The log of the system at hand; null if it keeps none.
std::shared_ptr<SystemLog> makeSystemLog();

}  // namespace zorvane
