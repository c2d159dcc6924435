#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <thread>

#include "Zorvane/Platform/CoreGraphics/CGWindowLevel.hpp"
#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/WaitUntil.hpp"
#include "tests/Support/X11TestClient.hpp"

namespace zorvane {
namespace {

std::vector<CGWindowID> idsOf(CGWindowList& list) {
    return list.create(CGWindowListOption::all, kCGNullWindowID).value_or(std::vector<CGWindowID>());
}

std::optional<CGWindowDescription> find(CGWindowList& list, CGWindowID id) {
    const auto found = list.createDescriptionFromArray({id});
    return found.empty() ? std::nullopt : std::optional(found.front());
}

/// An X server of its own, without a window manager. The client may play one.
class X11WindowListTest : public testing::Test {
  protected:
    /// The windows that a window manager lists, back to front.
    void listManaged(const std::vector<std::uint32_t>& windows) {
        client_.setNumbers(0, "_NET_CLIENT_LIST_STACKING", "WINDOW", windows);
    }

    CGWindowDescription described(CGWindowID id) {
        waitUntil([&] { return find(list(), id).has_value(); });
        return *find(list(), id);
    }

    CGWindowList& list() { return *platform_.windowList; }

    PrivateXServer server_;
    Platform platform_ = makeLinuxPlatform();
    X11TestClient client_;
};

TEST_F(X11WindowListTest, AWindowIsDescribedWithAllThatIsKnownOfIt) {
    const auto window = client_.makeManagedWindow({50, 60, 200, 150}, "Gr\xC3\xBC\xC3\x9F", "Tester");
    client_.setNumbers(window, "_NET_WM_WINDOW_OPACITY", "CARDINAL", {0x80000000});
    waitUntil([&] { return described(window).alpha < 1; });

    const CGWindowDescription expected{.number = window,
                                       .bounds = CGRect::make(50, 60, 200, 150),
                                       .name = "Gr\xC3\xBC\xC3\x9F",
                                       .layer = 0,
                                       .alpha = described(window).alpha,
                                       .isOnScreen = true,
                                       .memoryUsage = 200 * 150 * 4,
                                       .sharingState = CGWindowSharingType::readOnly,
                                       .ownerName = "Tester",
                                       .ownerPID = getpid()};
    EXPECT_EQ(described(window), expected);
    EXPECT_NEAR(expected.alpha, 0.5, 0.001);
    EXPECT_EQ(list().copyWindowInfo(CGWindowListOption::onScreenOnly, kCGNullWindowID), std::vector{expected});
}

TEST_F(X11WindowListTest, ObserversAreToldOfWhateverTheListShows) {
    std::atomic<int> calls = 0;
    const auto observation = list().observe([&] { ++calls; });
    waitUntil([&] { return calls > 0; });  // what was before the connection, nobody knows
    std::uint32_t window = 0;
    const std::function<void()> changes[] = {
        [&] {
            window = client_.makeManagedWindow({0, 0, 10, 10}, "window", "Tester");
        },
        [&] { client_.moveWindow(window, 50, 60); },
        [&] { client_.setText(window, "_NET_WM_NAME", "UTF8_STRING", "another title"); },
        [&] { client_.unmapWindow(window); },
    };
    for (const auto& change : changes) {
        idsOf(list());
        const int callsBefore = calls;
        change();
        waitUntil([&] { return calls > callsBefore; });
    }
    waitUntil([&] { return idsOf(list()).empty(); });
}

TEST_F(X11WindowListTest, WithoutAWindowManagerTheMappedWindowsAreListedInTheirOrder) {
    EXPECT_FALSE(list().create(CGWindowListOption::all, kCGNullWindowID));
    const auto back = client_.makeManagedWindow({0, 0, 10, 10}, "back", "Tester");
    const auto popup = client_.makeWindow({0, 0, 10, 10}, 0);
    const auto front = client_.makeManagedWindow({0, 0, 10, 10}, "front", "Tester");
    waitUntil([&] { return idsOf(list()) == std::vector{front, popup, back}; });
    EXPECT_EQ(described(popup).layer, 101);

    client_.raiseWindow(back);
    waitUntil([&] { return idsOf(list()) == std::vector{back, front, popup}; });
    client_.unmapWindow(front);
    waitUntil([&] { return idsOf(list()) == std::vector{back, popup}; });
    client_.closeWindow(popup);
    waitUntil([&] { return idsOf(list()) == std::vector{back}; });
}

TEST_F(X11WindowListTest, TheWindowManagersListAndOrderCount) {
    const auto one = client_.makeManagedWindow({0, 0, 10, 10}, "one", "Tester");
    const auto two = client_.makeManagedWindow({0, 0, 10, 10}, "two", "Tester");
    const auto unlisted = client_.makeManagedWindow({0, 0, 10, 10}, "unlisted", "Tester");
    waitUntil([&] { return idsOf(list()).size() == 3; });

    listManaged({two, one, one, 0xBAD});
    waitUntil([&] { return idsOf(list()) == std::vector{one, two}; });
    EXPECT_FALSE(find(list(), unlisted));
    client_.removeProperty(0, "_NET_CLIENT_LIST_STACKING");
    waitUntil([&] { return idsOf(list()).size() == 3; });
}

TEST_F(X11WindowListTest, AListThatAWindowManagerLeftBehindDoesNotCount) {
    const auto window = client_.makeManagedWindow({0, 0, 10, 10}, "window", "Tester");
    const auto check = client_.makeWindow({-10, -10, 1, 1}, 0);
    client_.setNumbers(0, "_NET_SUPPORTING_WM_CHECK", "WINDOW", {check});
    client_.setNumbers(check, "_NET_SUPPORTING_WM_CHECK", "WINDOW", {check});
    listManaged({});
    waitUntil([&] { return idsOf(list()).empty(); });
    client_.closeWindow(check);
    waitUntil([&] { return idsOf(list()) == std::vector{window}; });
}

TEST_F(X11WindowListTest, MinimisedWindowsAndThoseOfOtherDesktopsAreListedAsNotOnScreen) {
    const auto minimised = client_.makeManagedWindow({0, 0, 10, 10}, "minimised", "Tester");
    const auto unmapped = client_.makeManagedWindow({0, 0, 10, 10}, "unmapped", "Tester");
    const auto sticky = client_.makeManagedWindow({0, 0, 10, 10}, "sticky", "Tester");
    const auto moving = client_.makeManagedWindow({0, 0, 10, 10}, "moving", "Tester");
    client_.setNumbers(0, "_NET_CURRENT_DESKTOP", "CARDINAL", {0});
    client_.setNumbers(sticky, "_NET_WM_DESKTOP", "CARDINAL", {0xFFFFFFFF});
    client_.setNumbers(moving, "_NET_WM_DESKTOP", "CARDINAL", {1});
    listManaged({minimised, unmapped, sticky, moving});
    client_.setAtoms(minimised, "_NET_WM_STATE", {"_NET_WM_STATE_HIDDEN"});
    client_.unmapWindow(unmapped);

    const auto areOnScreen = [&](const std::vector<CGWindowID>& expected) {
        std::vector<CGWindowID> onScreen;
        const auto all = list().copyWindowInfo(CGWindowListOption::onScreenOnly, kCGNullWindowID);
        for (const auto& window : all) {
            if (window.isOnScreen) {
                onScreen.push_back(window.number);
            }
        }
        return all.size() == 4 && onScreen == expected;
    };
    waitUntil([&] { return areOnScreen({sticky}); });
    client_.setNumbers(0, "_NET_CURRENT_DESKTOP", "CARDINAL", {1});
    waitUntil([&] { return areOnScreen({moving, sticky}); });
}

TEST_F(X11WindowListTest, KindAndStateGiveTheLevel) {
    const auto window = client_.makeManagedWindow({0, 0, 10, 10}, "window", "Tester");
    const struct {
        std::vector<std::string> types;
        std::vector<std::string> states;
        std::int64_t level;
    } cases[] = {
        {{}, {}, 0},
        {{"NORMAL"}, {"ABOVE"}, 3},
        {{"DIALOG"}, {}, 0},
        {{"UTILITY"}, {}, 19},
        {{"DOCK"}, {"ABOVE"}, 20},
        {{"TOOLTIP"}, {}, 101},
        {{"SOMETHING_NEW", "NOTIFICATION", "NORMAL"}, {}, 101},
        {{"DESKTOP"}, {}, CGWindowLevelForKey(CGWindowLevelKey::desktopWindow)},
    };
    for (const auto& each : cases) {
        const auto prefixed = [](const std::string& prefix, std::vector<std::string> names) {
            std::for_each(names.begin(), names.end(), [&](std::string& name) { name.insert(0, prefix); });
            return names;
        };
        client_.setAtoms(window, "_NET_WM_WINDOW_TYPE", prefixed("_NET_WM_WINDOW_TYPE_", each.types));
        client_.setAtoms(window, "_NET_WM_STATE", prefixed("_NET_WM_STATE_", each.states));
        waitUntil([&] { return described(window).layer == each.level; });
    }
}

TEST_F(X11WindowListTest, AMoveShowsAtOnceAlsoWhenTheFrameMoves) {
    const auto window = client_.makeManagedWindow({0, 0, 100, 50}, "window", "Tester");
    EXPECT_EQ(described(window).bounds, CGRect::make(0, 0, 100, 50));
    client_.moveWindow(window, 30, 40);
    waitUntil([&] { return described(window).bounds == CGRect::make(30, 40, 100, 50); });

    const auto frame = client_.makeWindow({200, 100, 110, 75}, 0);
    client_.putInto(frame, window, 5, 20);
    client_.setNumbers(window, "_NET_FRAME_EXTENTS", "CARDINAL", {5, 5, 20, 5});
    listManaged({window});
    waitUntil([&] { return described(window).bounds == CGRect::make(200, 100, 110, 75); });
    client_.moveWindow(frame, 10, 10);
    waitUntil([&] { return described(window).bounds == CGRect::make(10, 10, 110, 75); });
    client_.setNumbers(window, "_GTK_FRAME_EXTENTS", "CARDINAL", {10, 10, 10, 10});
    waitUntil([&] { return described(window).bounds == CGRect::make(20, 20, 90, 55); });
    client_.setNumbers(window, "_GTK_FRAME_EXTENTS", "CARDINAL", {0xFFFFFFFF, 1, 1, 1});  // no window has such a shadow
    waitUntil([&] { return described(window).bounds == CGRect::make(10, 10, 110, 75); });
}

TEST_F(X11WindowListTest, AnyTitleIsTakenAsItIsUpToASaneLength) {
    const auto window = client_.makeManagedWindow({0, 0, 10, 10}, "", "Tester");
    EXPECT_FALSE(described(window).name);
    std::string huge;
    huge.resize(10'000'000, 'x');
    const struct {
        std::string type;
        std::string text;
        std::string title;
    } cases[] = {
        {"UTF8_STRING", "a\tb\n\x1B[31m", "a\tb\n\x1B[31m"},
        {"UTF8_STRING", "broken \xC3 and \xFF", "broken \xEF\xBF\xBD and \xEF\xBF\xBD"},
        {"UTF8_STRING", huge, huge.substr(0, 4096)},
        {"STRING", "Gr\xFC\xDF", "Gr\xC3\xBC\xC3\x9F"},
        {"COMPOUND_TEXT", "\xFC \x1B%G\xE2\x82\xAC\x1B%@ \xFC", "\xC3\xBC \xE2\x82\xAC \xC3\xBC"},
    };
    for (const auto& each : cases) {
        const bool isNew = each.type == "UTF8_STRING";
        client_.setText(window, "_NET_WM_NAME", "UTF8_STRING", isNew ? each.text : "");
        client_.setText(window, "WM_NAME", each.type, isNew ? "old" : each.text);
        waitUntil([&] { return described(window).name == each.title; });
    }
}

TEST_F(X11WindowListTest, AProcessIDIsBelievedOnlyFromThisMachine) {
    char host[256]{};
    gethostname(host, sizeof host - 1);
    const auto window = client_.makeManagedWindow({0, 0, 10, 10}, "window", "Tester");
    client_.setNumbers(window, "_NET_WM_PID", "CARDINAL", {1});
    waitUntil([&] { return described(window).ownerPID == getpid(); });  // whoever is connected
    client_.setText(window, "WM_CLIENT_MACHINE", "STRING", host);
    waitUntil([&] { return described(window).ownerPID == 1; });
    client_.setText(window, "WM_CLIENT_MACHINE", "STRING", "elsewhere.example");
    waitUntil([&] { return described(window).ownerPID == getpid(); });
    client_.setText(window, "WM_CLIENT_MACHINE", "STRING", host);
    client_.setNumbers(window, "_NET_WM_PID", "CARDINAL", {0xFFFFFFFF});
    EXPECT_EQ(described(window).ownerPID, getpid());
}

TEST_F(X11WindowListTest, WindowsThatVanishWhileTheyAreReadDoNoHarm) {
    const auto staying = client_.makeWindow({0, 0, 10, 10}, 0);
    described(staying);
    std::jthread flicker([&](const std::stop_token& stop) {
        X11TestClient other;
        while (!stop.stop_requested()) {
            other.closeWindow(other.makeManagedWindow({0, 0, 10, 10}, "flicker", "Tester"));
        }
    });
    for (int round = 0; round < 500; ++round) {
        const auto ids = idsOf(list());
        EXPECT_NE(std::find(ids.begin(), ids.end(), staying), ids.end());
    }
    flicker = {};
    waitUntil([&] { return idsOf(list()) == std::vector{staying}; });
}

TEST_F(X11WindowListTest, AWindowOnNoDisplayIsListed) {
    const auto window = client_.makeManagedWindow({-5000, 9000, 10, 10}, "lost", "Tester");
    EXPECT_EQ(described(window).bounds, CGRect::make(-5000, 9000, 10, 10));
    EXPECT_TRUE(described(window).isOnScreen);
}

TEST_F(X11WindowListTest, AServerThatIsGoneHasNoWindowsUntilItIsBack) {
    described(client_.makeManagedWindow({0, 0, 10, 10}, "before", "Tester"));
    server_.kill();
    waitUntil([&] { return idsOf(list()).empty(); });
    server_.restart();
    X11TestClient client;
    described(client.makeManagedWindow({0, 0, 10, 10}, "after", "Tester"));
}

TEST_F(X11WindowListTest, AServerThatHangsIsGivenUpAndFoundAgainLater) {
    const auto window = client_.makeManagedWindow({0, 0, 10, 10}, "window", "Tester");
    described(window);
    client_.moveWindow(window, 5, 5);
    client_.movePointer(1, 1);  // the server has told everybody of the move before it answers this
    server_.suspend();
    EXPECT_FALSE(find(list(), window));
    server_.resume();
    described(window);
}

TEST_F(X11WindowListTest, WithoutAServerNothingIsListed) {
    server_.kill();
    EXPECT_TRUE(list().copyWindowInfo(CGWindowListOption::all, kCGNullWindowID).empty());
    EXPECT_FALSE(list().create(CGWindowListOption::all, kCGNullWindowID));
    EXPECT_TRUE(list().createDescriptionFromArray({1, 2}).empty());
}

/// On the desktop that the tests run in, whose window manager decorates windows.
class X11WindowListOnDesktop : public testing::Test {
  protected:
    void SetUp() override {
        if (!std::getenv("DISPLAY")) {
            GTEST_SKIP() << "DISPLAY isn't set: run inside scripts/with-desktop";
        }
    }
};

TEST_F(X11WindowListOnDesktop, TheWindowManagersWordsAreUnderstood) {
    X11TestClient client;
    const auto list = makeLinuxPlatform().windowList;
    const auto window = client.makeManagedWindow({300, 200, 220, 130}, "Managed", "Tester");
    const auto is = [&](auto property) {
        const auto found = find(*list, window);
        return found && property(*found);
    };
    waitUntil([&] { return is([](const auto& each) { return each.isOnScreen && each.bounds.size.height > 130; }); });

    constexpr std::uint32_t iconicState = 3;
    client.askWindowManager(window, "WM_CHANGE_STATE", iconicState);
    waitUntil([&] { return is([](const auto& each) { return !each.isOnScreen; }); });
    client.askWindowManager(window, "_NET_ACTIVE_WINDOW", 2);
    waitUntil([&] { return is([](const auto& each) { return each.isOnScreen; }); });
    client.askWindowManager(0, "_NET_NUMBER_OF_DESKTOPS", 2);
    client.askWindowManager(window, "_NET_WM_DESKTOP", 1);
    waitUntil([&] { return is([](const auto& each) { return !each.isOnScreen; }); });
    client.askWindowManager(0, "_NET_NUMBER_OF_DESKTOPS", 1);
    waitUntil([&] { return is([](const auto& each) { return each.isOnScreen; }); });
    client.closeWindow(window);
    waitUntil([&] { return !find(*list, window); });
}

}  // namespace
}  // namespace zorvane
