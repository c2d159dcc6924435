#include "Zorvane/Internal/LocalDate.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace zorvane {
namespace {

/// Another time zone for the length of a test.
class TimeZone {
  public:
    explicit TimeZone(const char* name) {
        if (const char* previous = std::getenv("TZ")) {
            previous_ = previous;
        }
        setenv("TZ", name, 1);
        tzset();
    }
    ~TimeZone() {
        previous_ ? setenv("TZ", previous_->c_str(), 1) : unsetenv("TZ");
        tzset();
    }

  private:
    std::optional<std::string> previous_;
};

std::chrono::system_clock::time_point date(std::int64_t milliseconds) {
    return std::chrono::system_clock::time_point(std::chrono::milliseconds(milliseconds));
}

TEST(LocalDate, WritesTheOffsetOfTheTimeZone) {
    const auto moment = date(1'709'298'309'123);
    {
        const TimeZone zone("CET-1");
        EXPECT_EQ(logTimestamp(moment), "2024-03-01T14:05:09.123+0100");
        EXPECT_EQ(iso8601Date(moment), "2024-03-01T14:05:09+01:00");
    }
    {
        const TimeZone zone("NST3:30");
        EXPECT_EQ(logTimestamp(moment), "2024-03-01T09:35:09.123-0330");
        EXPECT_EQ(iso8601Date(moment), "2024-03-01T09:35:09-03:30");
    }
    const TimeZone zone("UTC0");
    EXPECT_EQ(logTimestamp(moment), "2024-03-01T13:05:09.123+0000");
    EXPECT_EQ(iso8601Date(moment), "2024-03-01T13:05:09Z");
}

TEST(LocalDate, CutsFractionsDownwardBeforeTheEpochToo) {
    const TimeZone zone("UTC0");
    EXPECT_EQ(logTimestamp(date(-1)), "1969-12-31T23:59:59.999+0000");
    EXPECT_EQ(logTimestamp(date(0) + std::chrono::microseconds(1999)), "1970-01-01T00:00:00.001+0000");
}

}  // namespace
}  // namespace zorvane
