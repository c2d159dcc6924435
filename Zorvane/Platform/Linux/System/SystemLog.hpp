// The two logs of a Linux system: the journal with its fields, and the plain syslog.
#pragma once

#include <string>
#include <vector>

#include "Zorvane/Platform/Foundation/SystemLog.hpp"

namespace zorvane {

/// systemd's journal, through its native protocol.
class JournalLog : public SystemLog {
  public:
    /// Whether a journal runs on this system.
    static bool isAvailable();

    /// The fields of an entry, each as NAME=value: MESSAGE, PRIORITY, SYSLOG_IDENTIFIER, ZORVANE_CATEGORY, and for each
    /// metadata key ZORVANE_META_ and the key in upper case, in which all but letters and digits are underscores.
    static std::vector<std::string> fields(const SystemLogEntry& entry);

    bool isEnabled(SystemLogType type) const override;
    void write(const SystemLogEntry& entry) override;
};

/// The syslog of the C library, under the identity and with the mask that the host gave it.
class Syslog : public SystemLog {
  public:
    /// Whether something listens for syslog messages on this system.
    static bool isAvailable();

    bool isEnabled(SystemLogType type) const override;
    void write(const SystemLogEntry& entry) override;
};

}  // namespace zorvane
