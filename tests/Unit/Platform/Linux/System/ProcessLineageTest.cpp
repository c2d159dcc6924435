#include "Zorvane/Platform/Linux/System/ProcessLineage.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

namespace zorvane {
namespace {

TEST(ProcessLineageTest, GoesFromAProcessToTheFirstOfAll) {
    const auto lineage = processLineage(getpid());
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
    const auto lineage = processLineage(child);
    close(pipe[1]);
    waitpid(child, nullptr, 0);
    ASSERT_GE(lineage.size(), 2u);
    EXPECT_EQ(lineage[1], getpid());
}

TEST(ProcessLineageTest, IsTheProcessAloneOrNothingWhereThereIsNone) {
    constexpr std::int32_t tooHigh = 5'000'000;
    EXPECT_EQ(processLineage(tooHigh), std::vector{tooHigh});
    EXPECT_TRUE(processLineage(0).empty());
    EXPECT_TRUE(processLineage(-1).empty());
}

}  // namespace
}  // namespace zorvane
