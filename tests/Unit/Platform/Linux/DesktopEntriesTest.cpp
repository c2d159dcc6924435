#include "Zorvane/Platform/Linux/System/DesktopEntries.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "Zorvane/Platform/Linux/System/IconFiles.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {
namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

std::string entryNamed(const std::string& name, const std::string& more = "") {
    return "[Desktop Entry]\nType=Application\nName=" + name + "\n" + more;
}

TEST(DesktopEntry, TheNameIsInTheUsersLanguage) {
    const std::string text =
        "# a comment\n\n[Other]\nName=Other\n[Desktop Entry]\nType=Application\nName[de]=Deutsch\n"
        "Name=English\r\nName[de_AT]=\xC3\x96sterreichisch\nName[sr@latin]=Srpski\n"
        "[Desktop Action New]\nName=New Window\n";
    const auto nameIn = [&](const char* locale) { return parseDesktopEntry(text, "id", locale)->name; };
    EXPECT_EQ(nameIn("de_DE.UTF-8"), "Deutsch");
    EXPECT_EQ(nameIn("de_AT.UTF-8"), "\xC3\x96sterreichisch");
    EXPECT_EQ(nameIn("sr_RS.UTF-8@latin"), "Srpski");
    EXPECT_EQ(nameIn("C"), "English");
    EXPECT_EQ(nameIn(""), "English");
}

TEST(DesktopEntry, ACommandTellsTheProgramUnlessAnybodyMayRunIt) {
    const auto programOf = [](const std::string& lines) {
        return parseDesktopEntry(entryNamed("Name", lines), "id", "C")->executable;
    };
    EXPECT_EQ(programOf("Exec=/usr/bin/editor --new %F"), "editor");
    EXPECT_EQ(programOf("Exec=env LANG=C X=1 editor"), "editor");
    EXPECT_EQ(programOf("Exec=\"/opt/An Editor/edit\" %U"), "edit");
    EXPECT_EQ(programOf("Exec=python3\nTerminal=true"), "");
    EXPECT_EQ(programOf("Exec=python3\nNoDisplay=true"), "");
    EXPECT_EQ(programOf("Exec=\""), "");
    EXPECT_EQ(programOf(""), "");
}

TEST(DesktopEntry, WhatIsNoApplicationIsNone) {
    EXPECT_FALSE(parseDesktopEntry("", "id", "C"));
    EXPECT_FALSE(parseDesktopEntry("Name=Name\nType=Application\n", "id", "C"));
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Link\nName=Name\n", "id", "C"));
    EXPECT_FALSE(parseDesktopEntry(entryNamed("Name", "Hidden=true\n"), "id", "C"));
    EXPECT_FALSE(parseDesktopEntry(std::string("\0\xFF[\n=\n]", 8), "id", "C"));
}

class DesktopEntriesTest : public testing::Test {
  protected:
    std::string nameOf(const char* windowClass, const char* instance, const char* program) {
        const auto entry = entries_.find(windowClass, instance, program);
        return entry ? entry->name : "";
    }

    TemporaryDirectory directory_;
    fs::path user_ = directory_.path() / "user";
    fs::path system_ = directory_.path() / "system";
    DesktopEntries entries_{{user_, system_}};
};

TEST_F(DesktopEntriesTest, TheClassCountsBeforeTheFilesNameAndThatBeforeTheProgram) {
    write(system_ / "applications/one.desktop", entryNamed("One", "StartupWMClass=Shared\nExec=both\n"));
    write(system_ / "applications/shared.desktop", entryNamed("Two", "Exec=both\n"));
    write(system_ / "applications/org.example.Three.desktop", entryNamed("Three", "Exec=three\n"));
    write(system_ / "applications/kde/four.desktop", entryNamed("Four"));
    EXPECT_EQ(nameOf("shared", "", ""), "One");
    EXPECT_EQ(nameOf("Other", "Shared", ""), "One");
    EXPECT_EQ(nameOf("org.example.three", "", "both"), "Three");
    EXPECT_EQ(nameOf("Other", "other", "three"), "Three");
    EXPECT_EQ(nameOf("kde-four", "", ""), "Four");
    EXPECT_EQ(nameOf("Other", "other", "both"), "") << "two entries start it";
    EXPECT_EQ(nameOf("", "", ""), "");
}

TEST_F(DesktopEntriesTest, TheUsersEntryHidesTheSystems) {
    write(system_ / "applications/one.desktop", entryNamed("System"));
    write(system_ / "applications/two.desktop", entryNamed("Unwanted"));
    write(user_ / "applications/one.desktop", entryNamed("User"));
    write(user_ / "applications/two.desktop", entryNamed("Unwanted", "Hidden=true\n"));
    EXPECT_EQ(nameOf("one", "", ""), "User");
    EXPECT_EQ(nameOf("two", "", ""), "");
}

TEST(IconFiles, TheBestSizeOfTheNamedIconIsFound) {
    const TemporaryDirectory directory;
    const fs::path user = directory.path() / "user";
    const fs::path system = directory.path() / "system";
    const auto find = [&](const std::string& icon) { return findIconFile(icon, {user, system}).value_or(fs::path()); };
    write(system / "icons/hicolor/16x16/apps/editor.png", "x");
    write(system / "pixmaps/editor.png", "x");
    EXPECT_EQ(find("editor"), system / "icons/hicolor/16x16/apps/editor.png");
    write(user / "icons/hicolor/scalable/apps/editor.svg", "x");
    EXPECT_EQ(find("editor"), user / "icons/hicolor/scalable/apps/editor.svg");
    write(system / "icons/hicolor/256x256/apps/editor.png", "x");
    EXPECT_EQ(find("editor"), system / "icons/hicolor/256x256/apps/editor.png");

    write(system / "pixmaps/old.png", "x");
    EXPECT_EQ(find("old.png"), system / "pixmaps/old.png");
    EXPECT_EQ(find(system / "pixmaps/old.png"), system / "pixmaps/old.png");
    EXPECT_EQ(find("../../pixmaps/old"), "");
    EXPECT_EQ(find("/etc/passwd"), "");
    EXPECT_EQ(find(""), "");
}

}  // namespace
}  // namespace zorvane
