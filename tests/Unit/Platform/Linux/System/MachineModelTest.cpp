#include "Zorvane/Platform/Linux/System/MachineModel.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {
namespace {

class MachineModelTest : public ::testing::Test {
  protected:
    void write(const std::filesystem::path& file, const std::string& text) {
        std::filesystem::create_directories((root.path() / file).parent_path());
        std::ofstream(root.path() / file) << text;
    }

    TemporaryDirectory root;
    MachineModel machine{root.path()};
};

TEST_F(MachineModelTest, AMachineThatTellsNothingHasNoModelAndNoLid) {
    EXPECT_EQ(machine.model(), std::nullopt);
    EXPECT_FALSE(machine.hasLid());
    write("sys/class/dmi/id/product_name", "\n");
    EXPECT_EQ(machine.model(), std::nullopt);
}

TEST_F(MachineModelTest, TheModelIsTheNameOfTheProduct) {
    write("sys/class/dmi/id/product_name", "MacBookPro15,1 \n");
    EXPECT_EQ(machine.model(), "MacBookPro15,1");
}

TEST_F(MachineModelTest, ALidComesWithTheChassisOrWithItsSwitch) {
    for (const auto& [chassis, hasLid] : std::initializer_list<std::pair<const char*, bool>>{
             {"3", false}, {"8", true}, {"10", true}, {"13", false}, {"31", true}, {"1", false}, {"", false}}) {
        write("sys/class/dmi/id/chassis_type", std::string(chassis) + "\n");
        EXPECT_EQ(machine.hasLid(), hasLid) << "chassis " << chassis;
    }
    std::filesystem::create_directories(root.path() / "proc/acpi/button/lid");
    EXPECT_FALSE(machine.hasLid()) << "a directory of switches without one";
    write("proc/acpi/button/lid/LID0/state", "state:      open\n");
    EXPECT_TRUE(machine.hasLid());
}

}  // namespace
}  // namespace zorvane
