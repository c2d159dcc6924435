#include "LogOutput.hpp"

#include <unistd.h>

#include <algorithm>
#include <string>

namespace zorvane::cli {

ZVLogger::HandlerToken showLog(std::optional<ZVLogLevel> level, StandardError& output) {
    if (!level) {
        return nullptr;
    }
    const auto& logger = ZVLogger::shared();
    logger->setLogLevel(std::min(*level, ZVLogLevel::debug));  // debug is what the system's log gets anyway
    // At once on the logging thread: a line that waits in a queue is lost at the program's end, when it matters most.
    return logger->addLogHandler(ZVLogger::HandlerMode::realtime,
                                 [&output, level = *level](const ZVLogger::LogMessage& message) {
                                     if (message.level >= level) {
                                         output.print(message.description());
                                     }
                                 });
}

std::string whereTheLogIs() {
    const bool hasJournal = access("/run/systemd/journal/socket", W_OK) == 0;
    return hasJournal ? "The log tells more: journalctl -t zorvane, or --log-level debug."
                      : "The log tells more: --log-level debug.";
}

}  // namespace zorvane::cli
