#include "Zorvane/Platform/Linux/System/SystemLog.hpp"

#include <gtest/gtest.h>
#include <syslog.h>

#include <algorithm>

namespace zorvane {
namespace {

bool holds(const std::vector<std::string>& fields, const std::string& field) {
    return std::ranges::find(fields, field) != fields.end();
}

TEST(JournalLog, GivesEachMetadataKeyAFieldOfALegalName) {
    const std::map<std::string, std::string> metadata{{"traceID", "x1=Y2 z"}, {"errors.count", "3"}, {"größe", "7"}};
    const auto fields = JournalLog::fields({SystemLogType::error, "[Conductor] Text.", "Conductor", metadata});
    EXPECT_TRUE(holds(fields, "MESSAGE=[Conductor] Text."));
    EXPECT_TRUE(holds(fields, "PRIORITY=3"));
    EXPECT_TRUE(holds(fields, "ZORVANE_CATEGORY=Conductor"));
    EXPECT_TRUE(holds(fields, "ZORVANE_META_TRACEID=x1=Y2 z"));
    EXPECT_TRUE(holds(fields, "ZORVANE_META_ERRORS_COUNT=3"));
    EXPECT_TRUE(holds(fields, "ZORVANE_META_GR____E=7"));
}

TEST(JournalLog, CutsFieldNamesToWhatTheJournalTakes) {
    const std::map<std::string, std::string> metadata{{std::string(200, 'k'), "v"}};
    const auto fields = JournalLog::fields({SystemLogType::debug, "", "", metadata});
    EXPECT_EQ(fields.back().find('='), 64U);
}

TEST(Syslog, FollowsTheMaskOfTheHost) {
    const int previous = setlogmask(LOG_UPTO(LOG_NOTICE));
    const Syslog log;
    EXPECT_TRUE(log.isEnabled(SystemLogType::error));
    EXPECT_TRUE(log.isEnabled(SystemLogType::notice));
    EXPECT_FALSE(log.isEnabled(SystemLogType::info));
    EXPECT_FALSE(log.isEnabled(SystemLogType::debug));
    setlogmask(previous);
}

}  // namespace
}  // namespace zorvane
