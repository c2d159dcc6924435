#include "Zorvane/ZVBundleInfo.hpp"

#include <gtest/gtest.h>

namespace zorvane {
namespace {

using Type = ZVBundleInfo::FileAssetType;

std::string decodingProblem(std::string_view bytes) {
    try {
        ZVBundleInfo::decode(bytes);
    } catch (const std::exception& error) {
        return error.what();
    }
    return "nothing thrown";
}

TEST(ZVBundleInfo, WritesSortedIndentedKeysAndEscapedSlashes) {
    const ZVBundleInfo info{
        1, {{Type::screen, "display-5.mov", {{"sub/a.json", "b.json"}}}, {Type::systemAudio, "systemaudio-x.m4a"}}};
    EXPECT_EQ(info.encode(), R"({
  "files" : [
    {
      "filename" : "display-5.mov",
      "related" : [
        "sub\/a.json",
        "b.json"
      ],
      "type" : "screen"
    },
    {
      "filename" : "systemaudio-x.m4a",
      "type" : "systemAudio"
    }
  ],
  "version" : 1
})");
    EXPECT_EQ(ZVBundleInfo::decode(info.encode()), info);
}

TEST(ZVBundleInfo, HasAnEmptyListWhenThereAreNoFiles) {
    EXPECT_EQ(ZVBundleInfo::empty.encode(), "{\n  \"files\" : [\n\n  ],\n  \"version\" : 1\n}");
    EXPECT_EQ(ZVBundleInfo::decode(ZVBundleInfo::empty.encode()), ZVBundleInfo::empty);
}

TEST(ZVBundleInfo, KeepsEveryTypeOfAsset) {
    for (const Type type : {Type::screen, Type::webcam, Type::audio, Type::mouse, Type::systemAudio, Type::appleDevice,
                            Type::topWindow}) {
        const ZVBundleInfo info{1, {{type, "f"}}};
        EXPECT_EQ(ZVBundleInfo::decode(info.encode()), info) << rawValue(type);
    }
}

TEST(ZVBundleInfo, KeepsAnotherVersion) {
    EXPECT_EQ(ZVBundleInfo::decode(R"({"version":7,"files":[]})").version, 7);
}

TEST(ZVBundleInfo, TellsAnEmptyListOfRelatedFilesFromNone) {
    const auto info = ZVBundleInfo::decode(
        R"({"version":1,"files":[{"type":"mouse","filename":"a","related":[]},{"type":"mouse","filename":"b"}]})");
    EXPECT_EQ(info.files[0].related, std::vector<std::string>{});
    EXPECT_EQ(info.files[1].related, std::nullopt);
}

TEST(ZVBundleInfo, SaysWhereAManifestIsWrong) {
    EXPECT_EQ(decodingProblem(R"({"version":1,"files":[{"type":"mouse","filename":"a"},{"type":"x","filename":"b"}]})"),
              "files[1].type: unknown value \"x\"");
    EXPECT_EQ(decodingProblem(R"({"version":1,"files":[{"type":"mouse"}]})"), "files[0]: missing key \"filename\"");
    EXPECT_EQ(decodingProblem(R"({"version":1,"files":[{"type":"mouse","filename":"a","related":[1]}]})"),
              "files[0].related[0]: not a string");
    EXPECT_EQ(decodingProblem(R"({"files":[]})"), "document: missing key \"version\"");
    EXPECT_EQ(decodingProblem(R"({"version":1,"files":{}})"), "files: not an array");
    EXPECT_EQ(decodingProblem("[]"), "document: not an object");
    EXPECT_EQ(decodingProblem("{\"version\":1,"), "document: not JSON at byte 14");
    EXPECT_EQ(decodingProblem(R"({"version":1e999,"files":[]})"), "document: holds a number that no double can hold");
}

}  // namespace
}  // namespace zorvane
