#include "Zorvane/Platform/Linux/System/ProcessLineage.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

namespace zorvane {
namespace {

TEST(ProcessLineageTest, GoesFromAProcessToTheFirstOfAll) {
    const auto lineage = processLineage(getpid(), processMoment());
    ASSERT_GE(lineage.size(), 2u);
    EXPECT_EQ(lineage[0], getpid());
    EXPECT_EQ(lineage[1], getppid());
}

// A name with brackets and spaces, which stands in the middle of what the system says.
TEST(ProcessLineageTest, KnowsTheParentOfAProcessWhateverThatIsCalled) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(pipe[1]);
        dup2(pipe[0], STDIN_FILENO);
        execl("/bin/sh", "sh", "-c", "printf '%s' 'a) R 1' > /proc/$$/comm; read line", nullptr);
        _exit(127);
    }
    close(pipe[0]);
    const auto lineage = processLineage(child, processMoment());
    close(pipe[1]);
    waitpid(child, nullptr, 0);
    ASSERT_GE(lineage.size(), 2u);
    EXPECT_EQ(lineage[1], getpid());
}

TEST(ProcessLineageTest, IsTheProcessAloneOrNothingWhereThereIsNone) {
    constexpr std::int32_t tooHigh = 5'000'000;
    EXPECT_EQ(processLineage(tooHigh, processMoment()), std::vector{tooHigh});
    EXPECT_TRUE(processLineage(0, processMoment()).empty());
    EXPECT_TRUE(processLineage(-1, processMoment()).empty());
}

// The number of a chosen process that has ended may be given to another one.
TEST(ProcessLineageTest, KnowsAProcessThatStartedLaterByItsForebearsOnly) {
    const std::uint64_t moment = processMoment();
    while (processMoment() == moment) {
        usleep(1000);  // the system counts hundredths of a second
    }
    const pid_t child = fork();
    if (child == 0) {
        pause();
        _exit(0);
    }
    const auto then = processLineage(child, moment);
    const auto now = processLineage(child, processMoment());
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    ASSERT_FALSE(then.empty());
    EXPECT_EQ(then.front(), getpid());
    EXPECT_EQ(now.front(), child);
}

}  // namespace
}  // namespace zorvane
