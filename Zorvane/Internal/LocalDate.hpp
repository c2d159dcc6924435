// Dates as text in the time zone of the system.
#pragma once

#include <chrono>
#include <string>

namespace zorvane {

/// Such as 2024-03-01T14:05:09.123+0100, cut to milliseconds; +0000 for UTC.
std::string logTimestamp(std::chrono::system_clock::time_point date);

/// ISO 8601 without a fraction, such as 2024-03-01T14:05:09+01:00; Z for UTC.
std::string iso8601Date(std::chrono::system_clock::time_point date);

}  // namespace zorvane
