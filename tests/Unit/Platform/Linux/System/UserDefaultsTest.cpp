#include "Zorvane/Platform/Linux/System/UserDefaults.hpp"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <thread>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/System/FileLock.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using Strings = std::vector<std::string>;
using Numbers = std::vector<std::uint32_t>;

class UserDefaultsTest : public ::testing::Test {
  protected:
    void SetUp() override { fs::create_directory(file.parent_path()); }

    static void set(UserDefaults& defaults, std::string_view key, NSUserDefaultsArray value) {
        defaults.update(key, [&](const auto&) { return value; });
    }
    static std::string textOf(const fs::path& path) {
        std::ifstream stream(path);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void write(std::string_view text) const { std::ofstream(file) << text; }
    std::vector<std::string> namesInDirectory() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(file.parent_path())) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    TemporaryDirectory directory;
    const fs::path file = directory.path() / "zorvane" / "preferences.json";
};

TEST_F(UserDefaultsTest, KeepsListsForOtherProcessesInAFileOfTheUsersOwn) {
    fs::remove(file.parent_path());
    UserDefaults defaults(file);
    EXPECT_FALSE(defaults.array("Names").has_value());
    set(defaults, "Names", Strings{"b", "a \"quoted\" one"});
    set(defaults, "Numbers", Numbers{4'294'967'295, 0});

    UserDefaults other(file);
    EXPECT_EQ(other.array("Names"), NSUserDefaultsArray(Strings{"b", "a \"quoted\" one"}));
    EXPECT_EQ(other.array("Numbers"), NSUserDefaultsArray(Numbers{4'294'967'295, 0}));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(fs::status(file.parent_path()).permissions(), fs::perms::owner_all);
    EXPECT_THAT(namesInDirectory(), ElementsAre("preferences.json", "preferences.json.lock"));
}

TEST_F(UserDefaultsTest, ShowsNothingForValuesOfAnotherForm) {
    write(
        R"({"text": "a", "mixed": ["a", 1], "negative": [-1], "large": [4294967296], "fraction": [1.5], "null": null})");
    UserDefaults defaults(file);
    for (const char* key : {"text", "mixed", "negative", "large", "fraction", "null", "missing"}) {
        EXPECT_FALSE(defaults.array(key).has_value()) << key;
    }
}

TEST_F(UserDefaultsTest, LeavesKeysItDoesNotKnowAsTheyAre) {
    write(R"({"zoom": 1.25, "Names": 3, "nested": {"b": [null, true], "a": "ü"}})");
    UserDefaults defaults(file);
    set(defaults, "Names", Strings{"x"});
    std::string text = textOf(file);
    std::erase_if(text, [](char character) { return character == ' ' || character == '\n'; });
    EXPECT_EQ(text, R"({"zoom":1.25,"Names":["x"],"nested":{"b":[null,true],"a":"ü"}})");
}

TEST_F(UserDefaultsTest, PutsAFileAsideThatItCannotUnderstand) {
    for (const char* broken : {"", "{\"Names\": [\"a\"", "[1, 2]", "{\"Names\": [\"\xff\"]}"}) {
        write(broken);
        LogCapture log(ZVLogger::shared());
        UserDefaults defaults(file);
        EXPECT_FALSE(defaults.array("Names").has_value()) << broken;
        EXPECT_EQ(textOf(file), broken) << "reading changes nothing";
        set(defaults, "Names", Strings{"new"});
        EXPECT_EQ(defaults.array("Names"), NSUserDefaultsArray(Strings{"new"}));

        ASSERT_EQ(log.count(ZVLogLevel::warning,
                            "The preferences can't be understood. They have been put aside, and new ones begin."),
                  1U);
        const fs::path aside = log.messages().back().metadata.at("movedTo");
        EXPECT_TRUE(aside.string().starts_with(file.string() + ".corrupt-")) << aside;
        EXPECT_EQ(textOf(aside), broken);
        fs::remove(aside);
    }
}

TEST_F(UserDefaultsTest, ReplacesWhatASymbolicLinkLeadsToAndKeepsTheLink) {
    const fs::path real = directory.path() / "dotfiles" / "zorvane.json";
    fs::create_directory(real.parent_path());
    const fs::path middle = directory.path() / "dotfiles" / "link";
    fs::create_symlink("zorvane.json", middle);
    fs::create_symlink(middle, file);
    UserDefaults defaults(file);
    set(defaults, "Names", Strings{"a"});
    set(defaults, "Names", Strings{"b"});
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_TRUE(fs::is_symlink(middle));
    EXPECT_THAT(textOf(real), ::testing::HasSubstr("\"b\""));
    EXPECT_EQ(defaults.array("Names"), NSUserDefaultsArray(Strings{"b"}));
}

TEST_F(UserDefaultsTest, LeavesAloneWhatIsNoFile) {
    const fs::path pipe = directory.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const fs::path& target : {fs::path("/dev/null"), pipe, directory.path(), file}) {
        fs::remove(file);
        fs::create_symlink(target, file);
        UserDefaults defaults(file);
        EXPECT_FALSE(defaults.array("Names").has_value());
        EXPECT_THROW(set(defaults, "Names", Strings{"a"}), NSError) << target;
        EXPECT_TRUE(fs::is_symlink(file)) << target;
    }
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(UserDefaultsTest, FailsWithoutHarmWhereItCannotWrite) {
    std::ofstream(directory.path() / "file") << "";
    UserDefaults belowAFile(directory.path() / "file" / "zorvane" / "preferences.json");
    EXPECT_FALSE(belowAFile.array("Names").has_value());
    EXPECT_THROW(set(belowAFile, "Names", Strings{"a"}), NSError);

    UserDefaults nowhere{fs::path()};
    EXPECT_FALSE(nowhere.array("Names").has_value());
    EXPECT_THROW(set(nowhere, "Names", Strings{"a"}), NSError);

    // What the new file would be written to is taken, so that the old one can't be replaced.
    write(R"({"Names": ["old"]})");
    fs::create_directory(file.string() + ".new");
    UserDefaults defaults(file);
    EXPECT_THROW(set(defaults, "Names", Strings{"new"}), NSError);
    EXPECT_EQ(defaults.array("Names"), NSUserDefaultsArray(Strings{"old"}));
}

TEST_F(UserDefaultsTest, LosesNoUpdateOfManyAtOnce) {
    const auto addNames = [this](const std::string& prefix) {
        UserDefaults defaults(file);
        for (int index = 0; index < 10; index++) {
            defaults.update("Names", [&](std::optional<NSUserDefaultsArray> value) {
                Strings names = value ? std::get<Strings>(*value) : Strings();
                names.push_back(prefix + std::to_string(index));
                return names;
            });
        }
    };
    {
        const std::jthread first(addNames, "a");
        const std::jthread second(addNames, "b");
        const std::jthread third(addNames, "c");
    }
    EXPECT_EQ(std::get<Strings>(UserDefaults(file).array("Names").value()).size(), 30U);
}

TEST_F(UserDefaultsTest, GivesUpOnALockThatSomebodyKeeps) {
    const FileLock held(file.string() + ".lock", std::chrono::milliseconds(0));
    EXPECT_THROW(FileLock(file.string() + ".lock", std::chrono::milliseconds(20)), NSError);
}

TEST(PreferencesFile, StandsInTheUsersConfigurationDirectory) {
    const TemporaryDirectory home;
    const char* oldHome = ::getenv("HOME");
    const std::string savedHome = oldHome ? oldHome : "";
    const char* oldConfig = ::getenv("XDG_CONFIG_HOME");
    const std::optional<std::string> savedConfig = oldConfig ? std::optional<std::string>(oldConfig) : std::nullopt;

    ::setenv("HOME", home.path().c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", "/config", 1);
    EXPECT_EQ(preferencesFile(), "/config/zorvane/preferences.json");
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(preferencesFile(), home.path() / ".config/zorvane/preferences.json");
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(preferencesFile(), home.path() / ".config/zorvane/preferences.json");
    ::setenv("HOME", "/nonexistent", 1);
    EXPECT_EQ(preferencesFile(), fs::path()) << "a home that isn't there is not made";
    ::unsetenv("HOME");
    EXPECT_EQ(preferencesFile(), fs::path());

    if (savedConfig) {
        ::setenv("XDG_CONFIG_HOME", savedConfig->c_str(), 1);
    }
    if (oldHome) {
        ::setenv("HOME", savedHome.c_str(), 1);
    }
}

}  // namespace
}  // namespace zorvane
