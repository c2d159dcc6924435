#include "Zorvane/Platform/Linux/System/RunningProgram.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

namespace zorvane {
namespace {

TEST(RunningProgramTest, TellsAProcessThatRunsAnotherProgramFromOneThatIsGone) {
    const std::string own = std::filesystem::read_symlink("/proc/self/exe").filename().string();
    EXPECT_FALSE(runsAnotherProgram(getpid(), own));
    EXPECT_TRUE(runsAnotherProgram(getpid(), own + "2"));
    EXPECT_TRUE(runsAnotherProgram(getpid(), ""));
    EXPECT_FALSE(runsAnotherProgram(5'000'000, own)) << "no process has this number";
}

}  // namespace
}  // namespace zorvane
