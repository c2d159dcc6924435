#include "Zorvane/ZVTime.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(ZVTime, MeasuresFromTheStartTime) {
    EXPECT_EQ(ZVTime::from(48'213.5, 48'213.5), ZVTime(0, 0, 1'000'000'000));
    EXPECT_EQ(ZVTime::from(1.5, 2.0), ZVTime(-0.5, -500'000'000, 1'000'000'000));
    EXPECT_EQ(ZVTime::from(2.5, CMTime::make(1, 2)), ZVTime(2, 2'000'000'000, 1'000'000'000));
    EXPECT_EQ(ZVTime::from(CMTime::make(3, 600), CMTime::make(1, 90'000)), ZVTime(449.0 / 90'000, 449, 90'000))
        << "exact times keep their common timescale";
}

TEST(ZVTime, CutsFractionsOfANanosecondTowardZero) {
    EXPECT_EQ(ZVTime::from(1.0000000019, 0.0).value(), 1'000'000'001);
    EXPECT_EQ(ZVTime::from(-1.0000000019, 0.0).value(), -1'000'000'001);
}

TEST(ZVTime, RefusesWhatDoesNotFitItsNanoseconds) {
    EXPECT_THROW(ZVTime::from(1.0, infinity), ZVError);
    EXPECT_THROW(ZVTime::from(infinity, infinity), ZVError);
    EXPECT_THROW(ZVTime::from(1e10, 0.0), ZVError);
    EXPECT_THROW(ZVTime::from(1.0, kCMTimeInvalid), ZVError);
    EXPECT_NO_THROW(ZVTime::from(9e9, 0.0));
}

TEST(ZVTime, AddsByTheExactTimeAndNotByTheStoredSeconds) {
    const ZVTime misleading(99, 1, 2);
    const ZVTime sum = misleading + ZVTime(0, 1, 3);
    EXPECT_EQ(sum, ZVTime(5.0 / 6, 5, 6));
    EXPECT_EQ(sum - misleading, ZVTime(1.0 / 3, 2, 6));
}

TEST(ZVTime, KeepsTheSecondsOfItsJSON) {
    const ZVTime time(1.25, -7, 600);
    EXPECT_EQ(time.toJSON(), R"({"seconds":1.25,"timescale":600,"value":-7})");
    EXPECT_EQ(ZVTime::fromJSON(time.toJSON()), time);
}

TEST(ZVTime, NamesWhatItsJSONLacks) {
    const auto problem = [](const char* json) -> std::string {
        try {
            ZVTimeRange::fromJSON(json);
        } catch (const std::exception& error) {
            return error.what();
        }
        return "nothing thrown";
    };
    EXPECT_EQ(problem(R"({"begin":{"seconds":0,"timescale":1}})"), "begin: missing key \"value\"");
    EXPECT_EQ(problem(R"({"begin":{"seconds":0,"value":0,"timescale":2147483648}})"),
              "begin.timescale: 2147483648 isn't between -2147483648 and 2147483647");
    EXPECT_EQ(problem(R"({"begin":{"seconds":0,"value":1.5,"timescale":1}})"), "begin.value: not a whole number");
}

TEST(ZVTimeRange, EndsWhereItWasMadeToEndWhateverTheTimescales) {
    const ZVTime begin(0.1, 4410, 44'100);
    const ZVTime end(2, 96'000, 48'000);
    const ZVTimeRange range = ZVTimeRange::between(begin, end);
    EXPECT_EQ(range.end().cmTime(), end.cmTime());
    EXPECT_EQ(ZVTimeRange::fromJSON(range.toJSON()), range);
}

}  // namespace
}  // namespace zorvane
