#include "Zorvane/Platform/Linux/PipeWire/PipeWireRoutes.hpp"

#include <gtest/gtest.h>

#include <string>

#include "tests/Support/PipeWireRoutePods.hpp"

namespace zorvane {
namespace {

using enum PipeWireRoute::Direction;
using enum PipeWireRoute::Availability;

TEST(PipeWireRoutesTest, ARouteIsReadAsItWasSent) {
    for (const PipeWireRoute& route :
         {PipeWireRoute{input, no, {4}}, PipeWireRoute{input, yes, {0}}, PipeWireRoute{output, unknown, {7}}}) {
        EXPECT_EQ(parseRoute(RoutePod(route, SPA_PARAM_Route).get()), route);
        EXPECT_EQ(parseRoute(RoutePod(route, SPA_PARAM_EnumRoute).get()), route);
    }
    const PipeWireRoute forMany{input, yes, {1, 2, 30}};
    EXPECT_EQ(parseRoute(RoutePod(forMany, SPA_PARAM_EnumRoute).get()), forMany);
    const PipeWireRoute forNone{input, yes, {}};
    EXPECT_EQ(parseRoute(RoutePod(forNone, SPA_PARAM_EnumRoute).get()), forNone);
}

TEST(PipeWireRoutesTest, WhatIsNoRouteIsNotRead) {
    EXPECT_EQ(parseRoute(nullptr), std::nullopt);
    const spa_pod_int number{{sizeof(std::int32_t), SPA_TYPE_Int}, 1, 0};
    EXPECT_EQ(parseRoute(&number.pod), std::nullopt);
    const spa_pod_object empty{{sizeof(spa_pod_object_body), SPA_TYPE_Object},
                               {SPA_TYPE_OBJECT_ParamRoute, SPA_PARAM_Route}};
    EXPECT_EQ(parseRoute(&empty.pod), std::nullopt) << "without a direction it may be a speaker's";
}

TEST(PipeWireRoutesTest, AMicrophoneIsCutOffWhenNothingCanBeHeardThere) {
    struct Case {
        std::string what;
        PipeWireRoutes routes;
        bool isCutOff;
    };
    const PipeWireRoute plugged{input, yes, {1}};
    const PipeWireRoute silent{input, unknown, {1}};
    const PipeWireRoute empty{input, no, {1}};
    const PipeWireRoute elsewhere{input, no, {2}};
    const PipeWireRoute speakers{output, no, {1}};
    const Case cases[] = {
        {"no routes", {}, false},
        {"the active one is there", {{plugged}, {plugged, empty}}, false},
        {"a card that can't tell", {{silent}, {silent}}, false},
        {"the active one is empty", {{empty}, {empty}}, true},
        {"the active one is empty, though another isn't", {{empty}, {empty, plugged}}, true},
        {"none is active and one is there", {{}, {empty, silent}}, false},
        {"none is active and all are empty", {{}, {empty, empty}}, true},
        {"another microphone's is empty", {{elsewhere, plugged}, {elsewhere, plugged}}, false},
        {"only another microphone has routes", {{elsewhere}, {elsewhere}}, false},
        {"speakers are unplugged", {{speakers}, {speakers}}, false},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(one.routes.isCutOff(1), one.isCutOff) << one.what;
    }
}

}  // namespace
}  // namespace zorvane
