#include "Zorvane/Internal/LocalDate.hpp"

#include <fmt/format.h>

#include <cstdlib>
#include <ctime>

namespace zorvane {
namespace {

struct LocalDate {
    std::tm fields{};
    int milliseconds;
    // From UTC, positive to the east.
    int offsetMinutes;

    explicit LocalDate(std::chrono::system_clock::time_point date) {
        const auto wholeSeconds = std::chrono::floor<std::chrono::seconds>(date);
        milliseconds = static_cast<int>(std::chrono::floor<std::chrono::milliseconds>(date - wholeSeconds).count());
        const std::time_t seconds = std::chrono::system_clock::to_time_t(wholeSeconds);
        localtime_r(&seconds, &fields);
        offsetMinutes = static_cast<int>(fields.tm_gmtoff / 60);
    }

    std::string dateAndTime() const {
        return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", fields.tm_year + 1900, fields.tm_mon + 1,
                           fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
    }

    std::string offset(const char* separator) const {
        const int minutes = std::abs(offsetMinutes);
        return fmt::format("{}{:02}{}{:02}", offsetMinutes < 0 ? '-' : '+', minutes / 60, separator, minutes % 60);
    }
};

}  // namespace

std::string logTimestamp(std::chrono::system_clock::time_point date) {
    const LocalDate local(date);
    return fmt::format("{}.{:03}{}", local.dateAndTime(), local.milliseconds, local.offset(""));
}

std::string iso8601Date(std::chrono::system_clock::time_point date) {
    const LocalDate local(date);
    return local.dateAndTime() + (local.offsetMinutes == 0 ? "Z" : local.offset(":"));
}

}  // namespace zorvane
