#include "Zorvane/Internal/ShareableContent.hpp"

#include <gtest/gtest.h>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using Case = ShareableContentError::Case;

class ShareableContentTest : public testing::VirtualWorldTest {
  protected:
    SCShareableContent retrieve() {
        return clock->complete(
            ShareableContent::getContentWithRestart(SCShareableContentScope::all, Case::timeoutRecordDisplay));
    }
    void answer(std::vector<VirtualAnswer> answers) { desktop->now().answerContentRequests(std::move(answers)); }
    void hangAlways() { answer(std::vector<VirtualAnswer>(100, VirtualAnswer::never())); }

    int requests() const {
        return desktop->withState([](const VirtualDesktopState& state) { return state.contentRequests; });
    }
    int restarts() const {
        return desktop->withState([](const VirtualDesktopState& state) { return state.serviceRestarts; });
    }
    Case retrieveExpectingTimeout() {
        try {
            retrieve();
        } catch (const ShareableContentError& error) {
            return error.errorCase();
        }
        ADD_FAILURE() << "no time-out";
        return Case::timeout;
    }
};

TEST_F(ShareableContentTest, AQuickAnswerTakesOneRequest) {
    answer({VirtualAnswer::after(1.9)});
    EXPECT_EQ(retrieve().displays.size(), 1u);
    EXPECT_NEAR(secondsNow(), 1.9, 0.01);
    Activity::waitUntilIdle();
    EXPECT_EQ(clock->pendingTimers(), 0u) << "nothing should wait for what is not going to be asked";
    EXPECT_EQ(requests(), 1);
}

TEST_F(ShareableContentTest, AHangingRequestIsMadeAgainAfterTwoAndFourSeconds) {
    answer({VirtualAnswer::never(), VirtualAnswer::never(), VirtualAnswer::after(0.05)});
    EXPECT_EQ(retrieve().displays.size(), 1u);
    EXPECT_NEAR(secondsNow(), 4.05, 0.01);
    EXPECT_EQ(requests(), 3);
    EXPECT_EQ(restarts(), 0);
}

TEST_F(ShareableContentTest, ALateAnswerToTheFirstRequestStillEndsTheWait) {
    answer({VirtualAnswer::after(2.5), VirtualAnswer::after(1.0)});
    EXPECT_EQ(retrieve().displays.size(), 1u);
    EXPECT_NEAR(secondsNow(), 2.5, 0.01);
    advance(10);
    EXPECT_EQ(requests(), 2);
}

TEST_F(ShareableContentTest, TheFirstTimeoutOfAProcessRestartsTheServiceOnce) {
    answer(std::vector<VirtualAnswer>(3, VirtualAnswer::never()));
    EXPECT_EQ(retrieve().displays.size(), 1u);
    EXPECT_NEAR(secondsNow(), 4.1, 0.01);
    EXPECT_EQ(restarts(), 1);
}

TEST_F(ShareableContentTest, WithoutAnyAnswerTheCallersErrorComesAfterTwoRounds) {
    hangAlways();
    EXPECT_EQ(retrieveExpectingTimeout(), Case::timeoutRecordDisplay);
    EXPECT_NEAR(secondsNow(), 8.2, 0.02);
    EXPECT_EQ(requests(), 6);
    EXPECT_EQ(restarts(), 1);
}

TEST_F(ShareableContentTest, AfterOneSuccessATimeoutRestartsNothing) {
    retrieve();
    hangAlways();
    const double before = secondsNow();
    EXPECT_EQ(retrieveExpectingTimeout(), Case::timeoutRecordDisplay);
    EXPECT_NEAR(secondsNow() - before, 4.1, 0.01);
    EXPECT_EQ(restarts(), 0);
}

TEST_F(ShareableContentTest, AnErrorOfThePlatformEndsTheCallAtOnce) {
    answer({VirtualAnswer::failing(std::make_exception_ptr(NSError("Test", 7)), 0.5)});
    EXPECT_THROW(retrieve(), NSError);
    EXPECT_NEAR(secondsNow(), 0.5, 0.01);
    advance(10);
    EXPECT_EQ(requests(), 1);
    EXPECT_EQ(restarts(), 0);
}

TEST_F(ShareableContentTest, ACancelledCallMakesNoFurtherRequest) {
    hangAlways();
    const auto handle = spawn(ShareableContent::getContentWithRetries(SCShareableContentScope::all));
    advance(1);
    handle.cancel();
    EXPECT_THROW(clock->complete(handle.value()), ZVCancelled);
    advance(10);
    EXPECT_EQ(requests(), 1);
}

TEST_F(ShareableContentTest, AFailedRestartOfTheServiceReachesTheCaller) {
    hangAlways();
    desktop->now().failServiceRestart(std::make_exception_ptr(NSError("Test", 8)));
    EXPECT_THROW(retrieve(), NSError);
    EXPECT_EQ(requests(), 3);
}

}  // namespace
}  // namespace zorvane
