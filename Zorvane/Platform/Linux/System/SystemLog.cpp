#include "Zorvane/Platform/Linux/System/SystemLog.hpp"

// The place of the one call below says nothing about the message.
#define SD_JOURNAL_SUPPRESS_LOCATION

#include <sys/uio.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>
#include <cerrno>

#include <algorithm>

namespace zorvane {
namespace {

constexpr const char* journalSocket = "/run/systemd/journal/socket";
constexpr const char* syslogSocket = "/dev/log";

// The journal refuses longer names.
constexpr std::size_t maxFieldNameLength = 64;

int priority(SystemLogType type) {
    switch (type) {
        case SystemLogType::debug:
            return LOG_DEBUG;
        case SystemLogType::info:
            return LOG_INFO;
        case SystemLogType::notice:
            return LOG_NOTICE;
        case SystemLogType::error:
            return LOG_ERR;
    }
    return LOG_NOTICE;
}

char fieldNameCharacter(char character) {
    if (character >= 'a' && character <= 'z') {
        return static_cast<char>(character - 'a' + 'A');
    }
    const bool isAllowed = (character >= 'A' && character <= 'Z') || (character >= '0' && character <= '9');
    return isAllowed ? character : '_';
}

std::string metadataField(std::string_view key, std::string_view value) {
    std::string field = "ZORVANE_META_";
    std::ranges::transform(key.substr(0, maxFieldNameLength - field.size()), std::back_inserter(field),
                           &fieldNameCharacter);
    field += '=';
    field += value;
    return field;
}

}  // namespace

bool JournalLog::isAvailable() {
    return access(journalSocket, W_OK) == 0;
}

std::vector<std::string> JournalLog::fields(const SystemLogEntry& entry) {
    std::vector<std::string> fields;
    fields.reserve(4 + entry.metadata.size());
    fields.push_back("MESSAGE=" + std::string(entry.text));
    fields.push_back("PRIORITY=" + std::to_string(priority(entry.type)));
    fields.push_back(std::string("SYSLOG_IDENTIFIER=") + program_invocation_short_name);
    fields.push_back("ZORVANE_CATEGORY=" + std::string(entry.category));
    for (const auto& [key, value] : entry.metadata) {
        fields.push_back(metadataField(key, value));
    }
    return fields;
}

bool JournalLog::isEnabled(SystemLogType) const {
    return true;
}

void JournalLog::write(const SystemLogEntry& entry) {
    std::vector<std::string> texts = fields(entry);
    std::vector<iovec> vectors;
    vectors.reserve(texts.size());
    for (std::string& text : texts) {
        vectors.push_back({text.data(), text.size()});
    }
    sd_journal_sendv(vectors.data(), static_cast<int>(vectors.size()));
}

bool Syslog::isAvailable() {
    return access(syslogSocket, W_OK) == 0;
}

bool Syslog::isEnabled(SystemLogType type) const {
    return (setlogmask(0) & LOG_MASK(priority(type))) != 0;
}

void Syslog::write(const SystemLogEntry& entry) {
    syslog(LOG_USER | priority(entry.type), "%.*s", static_cast<int>(entry.text.size()), entry.text.data());
}

std::shared_ptr<SystemLog> makeSystemLog() {
    if (JournalLog::isAvailable()) {
        return std::make_shared<JournalLog>();
    }
    if (Syslog::isAvailable()) {
        return std::make_shared<Syslog>();
    }
    return nullptr;
}

}  // namespace zorvane
