#include "Zorvane/Platform/Linux/System/CameraNodes.hpp"

#include <gmock/gmock.h>

#include <fstream>

#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(CameraNodes, AreTheVideoDevicesByNameAndWhetherTheyMayBeOpened) {
    const TemporaryDirectory devices;
    for (const char* name : {"video10", "video0", "video", "videoA", "video1x", "v4l-subdev0", "media0"}) {
        std::ofstream(devices.path() / name) << "";
    }
    // Root may open everything that is there.
    std::filesystem::create_symlink("nothing", devices.path() / "video2");
    const CameraNodes nodes = readCameraNodes(devices.path());
    EXPECT_THAT(nodes.open, ElementsAre(devices.path() / "video0", devices.path() / "video10"));
    EXPECT_THAT(nodes.closed, ElementsAre(devices.path() / "video2"));
    EXPECT_EQ(nodes.group, "");
}

TEST(CameraNodes, AreNoneWhereThereIsNoDirectory) {
    const CameraNodes nodes = readCameraNodes("/nonexistent");
    EXPECT_THAT(nodes.open, IsEmpty());
    EXPECT_THAT(nodes.closed, IsEmpty());
}

}  // namespace
}  // namespace zorvane
