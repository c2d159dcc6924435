#include "Zorvane/Internal/FileURL.hpp"

#include <gtest/gtest.h>

namespace zorvane {
namespace {

TEST(FileURL, EncodesAllButPathCharacters) {
    EXPECT_EQ(absoluteURLString("/tmp/a b#c?d%ä.mov", Directory::no), "file:///tmp/a%20b%23c%3Fd%25%C3%A4.mov");
    EXPECT_EQ(absoluteURLString("/a-b_c.d~e", Directory::no), "file:///a-b_c.d~e");
}

TEST(FileURL, EndsADirectoryWithExactlyOneSlash) {
    EXPECT_EQ(absoluteURLString("/tmp/x.zorvane", Directory::yes), "file:///tmp/x.zorvane/");
    EXPECT_EQ(absoluteURLString("/tmp/x.zorvane/", Directory::yes), "file:///tmp/x.zorvane/");
    EXPECT_EQ(absoluteURLString("/", Directory::yes), "file:///");
}

TEST(FileURL, MakesARelativePathAbsolute) {
    EXPECT_EQ(absoluteURLString("x", Directory::no),
              absoluteURLString(std::filesystem::current_path() / "x", Directory::no));
    EXPECT_EQ(absoluteURLString("", Directory::yes), "file://") << "not even an empty path is refused";
}

}  // namespace
}  // namespace zorvane
