#include "Zorvane/ZVError.hpp"
#include "tests/Desktop/X11/X11StreamFixture.hpp"

namespace zorvane {
namespace {

/// A server that doesn't answer. Each wait for it ends after `longestXAnswer`.
class X11HangTest : public X11StreamTest {
  protected:
    ~X11HangTest() override { server_.resume(); }

    std::exception_ptr errorOfContent() {
        std::promise<std::exception_ptr> answer;
        capture().getShareableContent(
            SCShareableContentScope::all,
            [&](const SCShareableContent&, std::exception_ptr error) { answer.set_value(std::move(error)); });
        return answer.get_future().get();
    }
};

bool tellsOfNoAnswer(const std::exception_ptr& error) {
    return localizedDescription(error).find("doesn't answer") != std::string::npos;
}

TEST_F(X11HangTest, AStartEndsWithAnError) {
    auto stream = makeStream(std::make_shared<ScreenSamples>());
    server_.suspend();
    const auto error = start(*stream);
    EXPECT_TRUE(tellsOfNoAnswer(error)) << localizedDescription(error);
}

TEST_F(X11HangTest, AStreamThatIsStartingCanBeStopped) {
    auto stream = makeStream(std::make_shared<ScreenSamples>());
    server_.suspend();
    std::promise<std::exception_ptr> started;
    stream->startCapture([&](std::exception_ptr error) { started.set_value(std::move(error)); });
    EXPECT_EQ(codeOf(stop(*stream)), 0);
    EXPECT_EQ(codeOf(started.get_future().get()), static_cast<int>(SCStreamErrorCode::failedToStart));
}

TEST_F(X11HangTest, QueriesEndWithAnErrorAndWorkAgainLater) {
    contentOf(capture());  // so that there is a connection
    server_.suspend();
    const auto onOldConnection = errorOfContent();
    EXPECT_TRUE(tellsOfNoAnswer(onOldConnection)) << localizedDescription(onOldConnection);
    const auto onNewConnection = errorOfContent();
    EXPECT_TRUE(tellsOfNoAnswer(onNewConnection)) << localizedDescription(onNewConnection);
    server_.resume();
    EXPECT_EQ(contentOf(capture()).displays.size(), 1U);
}

}  // namespace
}  // namespace zorvane
