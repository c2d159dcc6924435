#include "Zorvane/Internal/CGInterop/MacModelSpecs.hpp"

#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using MacModelSpecsTest = testing::VirtualWorldTest;

TEST_F(MacModelSpecsTest, TellsT2MacBooksByFamilyAndMajorNumber) {
    struct Row {
        std::optional<std::string> model;
        bool isT2MacBook;
    };
    const Row rows[] = {
        {"MacBookAir7,2", false},   {"MacBookAir8,1", true},    {"MacBookAir10,1", true},  {"MacBookPro14,3", false},
        {"MacBookPro15,1", true},   {"MacBookPro18,4", true},   {"MacBook10,1", false},    {"iMacPro1,1", false},
        {"iMac20,1", false},        {"Macmini8,1", false},      {"MacPro7,1", false},      {"Mac14,2", false},
        {"MacBookPro15", false},    {"MacBookPro15,", false},   {"MacBookPro15,x", false}, {"MacBookPro,1", false},
        {"MacBookPro-15,1", false}, {"MacBookPro1 5,1", false}, {"ThinkPad X1", false},    {"", false},
        {std::nullopt, false},
    };
    for (const Row& row : rows) {
        desktop->now().setMachine({.model = row.model, .hasLid = true});
        EXPECT_EQ(MacModelSpecs::getModelIdentifier(), row.model);
        EXPECT_EQ(MacModelSpecs::isT2MacBook(), row.isT2MacBook) << row.model.value_or("none");
    }
}

TEST_F(MacModelSpecsTest, ALaptopIsAMacBookOrAMachineWithALid) {
    for (const char* model : {"MacBook10,1", "MacBookAir8,1", "MacBookPro5,5", "Mac14,2", "Mac14,5"}) {
        desktop->now().setMachine({.model = model});
        EXPECT_TRUE(MacModelSpecs::isLaptop()) << model;
    }
    for (const char* model : {"Macmini8,1", "Mac14,3", "iMac20,1", "OptiPlex"}) {
        desktop->now().setMachine({.model = model});
        EXPECT_FALSE(MacModelSpecs::isLaptop()) << model;
    }
    desktop->now().setMachine({.model = std::nullopt, .hasLid = true});
    EXPECT_TRUE(MacModelSpecs::isLaptop());
}

}  // namespace
}  // namespace zorvane
