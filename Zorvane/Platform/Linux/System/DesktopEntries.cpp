#include "Zorvane/Platform/Linux/System/DesktopEntries.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

namespace zorvane {
namespace {

namespace fs = std::filesystem;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string messagesLocale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (auto value = environment(name); !value.empty()) {
            return value;
        }
    }
    return {};
}

std::string_view trimmed(std::string_view text) {
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '\\' || index + 1 == text.size()) {
            result += text[index];
            continue;
        }
        constexpr std::string_view letters = "sntr\\";
        constexpr std::string_view meanings = " \n\t\r\\";
        const auto which = letters.find(text[++index]);
        result += which == letters.npos ? text[index] : meanings[which];
    }
    return result;
}

/// How well the language of a key such as "Name[de_AT@euro]" fits; 0 for not at all, 1 for a key without one.
int fit(std::string_view language, std::string_view locale) {
    const auto modifierAt = std::min(locale.find('@'), locale.size());
    const std::string modifier(locale.substr(modifierAt));
    const std::string country(locale.substr(0, std::min(locale.find('.'), modifierAt)));
    const std::string bare = country.substr(0, country.find('_'));
    const std::array worstToBest{std::string(), bare, bare + modifier, country, country + modifier};
    const auto best = std::find(worstToBest.rbegin(), worstToBest.rend(), language);
    return static_cast<int>(worstToBest.rend() - best);
}

/// The name of the program's file: the first word of a command, which may be quoted, or of what "env" runs.
std::string programIn(const std::string& command) {
    std::string word;
    bool isQuoted = false;
    for (std::size_t index = 0; index <= command.size(); ++index) {
        const char letter = index < command.size() ? command[index] : ' ';
        if (letter == '"') {
            isQuoted = !isQuoted;
        } else if (letter == '\\' && index + 1 < command.size()) {
            word += command[++index];
        } else if (letter != ' ' || isQuoted) {
            word += letter;
        } else if (!word.empty()) {
            auto name = fs::path(word).filename().string();
            if (name != "env" && word.find('=') == word.npos) {
                return name;
            }
            word.clear();
        }
    }
    return {};
}

/// What the keys of an entry's main group say.
class EntryReader {
  public:
    explicit EntryReader(std::string_view locale) : locale_(locale) {}

    void takeLine(std::string_view line) {
        line = trimmed(line);
        if (line.starts_with('[')) {
            isInside_ = line == "[Desktop Entry]";
        } else if (const auto equals = line.find('='); isInside_ && !line.starts_with('#') && equals != line.npos) {
            takeKey(trimmed(line.substr(0, equals)), unescaped(trimmed(line.substr(equals + 1))));
        }
    }

    std::optional<DesktopEntry> entry(std::string identifier) && {
        if (type_ != "Application" || isDeleted_ || entry_.name.empty()) {
            return std::nullopt;
        }
        if (isForInside_) {
            entry_.executable.clear();
        }
        entry_.identifier = std::move(identifier);
        return std::move(entry_);
    }

  private:
    void takeKey(std::string_view key, std::string value) {
        const auto bracket = std::min(key.find('['), key.size());
        const auto language = key.substr(std::min(bracket + 1, key.size()));
        if (key.substr(0, bracket) == "Name") {
            takeName(language.substr(0, language.find(']')), std::move(value));
        } else if (key == "Type") {
            type_ = std::move(value);
        } else if (key == "Icon") {
            entry_.icon = std::move(value);
        } else if (key == "StartupWMClass") {
            entry_.startupClass = std::move(value);
        } else if (key == "Exec") {
            entry_.executable = programIn(value);
        } else if (key == "Hidden") {
            isDeleted_ = value == "true";
        } else if (key == "Terminal" || key == "NoDisplay") {
            isForInside_ |= value == "true";
        }
    }

    void takeName(std::string_view language, std::string value) {
        if (const int fits = fit(language, locale_); fits > nameFits_) {
            nameFits_ = fits;
            entry_.name = std::move(value);
        }
    }

    std::string_view locale_;
    DesktopEntry entry_;
    std::string type_;
    int nameFits_ = 0;
    bool isInside_ = false;
    bool isDeleted_ = false;
    bool isForInside_ = false;  // in a terminal, or not for the user to start: its program may be anybody's
};

std::string textOf(const fs::path& path) {
    constexpr std::uintmax_t longest = 1 << 20;
    std::error_code error;
    const auto size = fs::is_regular_file(path, error) ? fs::file_size(path, error) : 0;
    if (error || size == 0 || size > longest) {
        return {};
    }
    std::string text(size, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(text.data(), static_cast<std::streamsize>(size));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

/// The smallest time for a folder that isn't there.
fs::file_time_type lastChange(const fs::path& folder) {
    std::error_code error;
    const auto time = fs::last_write_time(folder, error);
    return error ? fs::file_time_type::min() : time;
}

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return result;
}

bool isSameWord(std::string_view a, std::string_view b) {
    return !a.empty() && a.size() == b.size() && lowered(a) == lowered(b);
}

template <class Predicate>
const DesktopEntry* firstOf(const std::vector<DesktopEntry>& entries, Predicate matches) {
    const auto found = std::find_if(entries.begin(), entries.end(), matches);
    return found == entries.end() ? nullptr : &*found;
}

}  // namespace

std::optional<DesktopEntry> parseDesktopEntry(std::string_view text, std::string identifier, std::string_view locale) {
    EntryReader reader(locale);
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        reader.takeLine(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return std::move(reader).entry(std::move(identifier));
}

std::vector<fs::path> dataDirectories() {
    std::vector<fs::path> directories;
    const auto add = [&](const fs::path& path) {
        if (path.is_absolute()) {
            directories.push_back(path);
        }
    };
    const std::string home = environment("XDG_DATA_HOME");
    add(home.empty() ? fs::path(environment("HOME")) / ".local/share" : fs::path(home));
    const std::string others = environment("XDG_DATA_DIRS");
    std::istringstream list(others.empty() ? "/usr/local/share:/usr/share" : others);
    for (std::string directory; std::getline(list, directory, ':');) {
        add(directory);
    }
    return directories;
}

DesktopEntries::DesktopEntries(std::vector<fs::path> dataDirectories)
    : dataDirectories_(std::move(dataDirectories)), locale_(messagesLocale()) {}

std::optional<DesktopEntry> DesktopEntries::find(std::string_view windowClass, std::string_view windowInstance,
                                                 std::string_view executable) {
    const std::lock_guard lock(mutex_);
    update();
    const auto copy = [](const DesktopEntry* entry) { return entry ? std::optional(*entry) : std::nullopt; };
    for (const auto member : {&DesktopEntry::startupClass, &DesktopEntry::identifier}) {
        for (const std::string_view word : {windowClass, windowInstance}) {
            if (const auto* entry =
                    firstOf(entries_, [&](const DesktopEntry& each) { return isSameWord(each.*member, word); })) {
                return copy(entry);
            }
        }
    }
    return copy(findByExecutable(executable));
}

const DesktopEntry* DesktopEntries::findByExecutable(std::string_view executable) const {
    const auto starts = [&](const DesktopEntry& each) { return !executable.empty() && each.executable == executable; };
    return std::count_if(entries_.begin(), entries_.end(), starts) == 1 ? firstOf(entries_, starts) : nullptr;
}

void DesktopEntries::update() {
    constexpr std::chrono::seconds interval(1);
    const auto now = std::chrono::steady_clock::now();
    if (looked_ && now - *looked_ < interval) {
        return;
    }
    const bool isFirst = !std::exchange(looked_, now);
    const auto hasChanged = [](const Folder& folder) { return lastChange(folder.path) != folder.changed; };
    if (isFirst || std::any_of(folders_.begin(), folders_.end(), hasChanged)) {
        readAll();
    }
}

void DesktopEntries::readAll() {
    entries_.clear();
    folders_.clear();
    std::set<std::string> seen;
    for (const fs::path& directory : dataDirectories_) {
        readFolder(directory / "applications", "", seen);
    }
}

/// A subfolder that comes or goes changes its folder. Links to folders aren't followed.
void DesktopEntries::readFolder(const fs::path& folder, const std::string& prefix, std::set<std::string>& seen) {
    folders_.push_back({folder, lastChange(folder)});
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error)) {
        std::error_code ignored;
        const auto& path = each->path();
        if (each->symlink_status(ignored).type() == fs::file_type::directory) {
            readFolder(path, prefix + path.filename().string() + "-", seen);
        } else if (path.extension() == ".desktop" && seen.insert(prefix + path.stem().string()).second) {
            if (auto entry = parseDesktopEntry(textOf(path), prefix + path.stem().string(), locale_)) {
                entries_.push_back(std::move(*entry));
            }
        }
    }
}

}  // namespace zorvane
