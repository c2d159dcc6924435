#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "tests/Desktop/X11/X11EventsFixture.hpp"
#include "tests/Support/WaitUntil.hpp"

namespace zorvane {
namespace {

using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;

class X11EventsTroubleTest : public X11EventsTest {
  protected:
    ~X11EventsTroubleTest() override { server_.resume(); }
};

const auto endBySystem = Field(&CGEvent::type, CGEventType::tapDisabledByUserInput);

std::string errorOfTap(CGEvents& events) {
    try {
        events.tapCreate(allEvents, [](const CGEvent&) {});
    } catch (const NSError& error) {
        return error.localizedDescription();
    }
    return "no error";
}

TEST(X11EventsWithoutRecordTest, TheErrorSaysWhatTheServerLacks) {
    const PrivateXServer server("640x480x24", "RECORD");
    const Platform platform = makeLinuxPlatform();
    EXPECT_THAT(errorOfTap(*platform.events), HasSubstr("lacks the RECORD extension"));
    EXPECT_TRUE(platform.events->create()) << "the pointer can be asked for all the same";
}

TEST_F(X11EventsTroubleTest, AServerThatEndsIsTheLastEvent) {
    const auto listener = listen();
    server_.kill();
    waitUntil([&] { return !heard_.all().empty(); });
    listener->flush();
    EXPECT_THAT(heard_.all(), ElementsAre(endBySystem));
    EXPECT_FALSE(platform_.events->create());
    EXPECT_THAT(errorOfTap(*platform_.events), HasSubstr("Can't reach the X server"));
}

TEST_F(X11EventsTroubleTest, AServerThatHangsEndsAFlushAndWithItTheListener) {
    const auto listener = listen();
    server_.suspend();
    listener->flush();
    EXPECT_THAT(heard_.all(), ElementsAre(endBySystem));
    EXPECT_THAT(errorOfTap(*platform_.events), HasSubstr("doesn't answer"));
}

TEST_F(X11EventsTroubleTest, AListenerEndsWhileTheServerHangsAndHearsNothingOfIt) {
    auto listener = listen();
    server_.suspend();
    listener.reset();
    EXPECT_TRUE(heard_.all().empty());
}

}  // namespace
}  // namespace zorvane
