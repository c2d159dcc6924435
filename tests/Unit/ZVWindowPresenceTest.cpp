#include "Zorvane/ZVWindowPresence.hpp"

#include <gtest/gtest.h>

#include "Zorvane/UnknownDiscriminator.hpp"

namespace zorvane {
namespace {

const ZVTime time{0.5, 1, 2};

TEST(ZVWindowPresence, IsOneFlatObjectWithItsKeysSortedAndReadsBack) {
    const ZVWindowInfo whole{time, 4'294'967'295, "Draft/2", -1, "Editor", -0.5, 0, 1.25, 1};
    const ZVWindowInfo bare{.time = time, .windowID = 7};
    const std::pair<ZVWindowPresence, std::string_view> forms[] = {
        {ZVWindowPresence(whole), R"({"applicationID":-1,"applicationName":"Editor","height":1,)"
                                  R"("time":{"seconds":0.5,"timescale":2,"value":1},"type":"present","width":1.25,)"
                                  R"("windowID":4294967295,"windowTitle":"Draft\/2","x":-0.5,"y":0})"},
        {ZVWindowPresence(bare),
         R"({"height":0,"time":{"seconds":0.5,"timescale":2,"value":1},"type":"present","width":0,)"
         R"("windowID":7,"x":0,"y":0})"},
        {ZVWindowPresence(ZVWindowAbsence{time}),
         R"({"time":{"seconds":0.5,"timescale":2,"value":1},"type":"absent"})"},
    };
    for (const auto& [presence, json] : forms) {
        EXPECT_EQ(presence.toJSON(), json);
        EXPECT_EQ(ZVWindowPresence::fromJSON(json).payload(), presence.payload()) << json;
        EXPECT_EQ(ZVWindowPresence::fromJSON(json).time(), time);
    }
    EXPECT_THROW(ZVWindowPresence::fromJSON(R"({"type":"mouse"})"), UnknownDiscriminator);
}

}  // namespace
}  // namespace zorvane
