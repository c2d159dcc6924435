#include "CommandLine.hpp"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include "Figures.hpp"
#include "OptionValues.hpp"
#include "WriteAll.hpp"
#include "Zorvane/ZVVersion.hpp"

namespace zorvane::cli {
namespace {

constexpr auto overview = "Records the desktop into a bundle of files that all begin and end at the same instant.";

constexpr auto recordHelp = R"(Examples:
  zorvane record                              the main display, until Ctrl-C
  zorvane record --seconds 10 -o talk.zorvane ten seconds into a directory of that name
  zorvane record --json | jq -r .bundle       for scripts: one JSON object at the end
  zorvane record --display main --microphone default --system-audio
                                              picture, voice and sound, a file each
  zorvane record --audio                      the system's sound inside the movie
  zorvane record --mouse --keyboard --top-window
                                              what was done where, as JSON beside the movie
  zorvane record --camera default --microphone default
                                              a camera and a voice, in one movie
  zorvane record --microphone default         a microphone alone
  zorvane record --window 41943046            where a window is, with its application alone
  zorvane record --segmented                  six-second segments and playlists, to play while it goes on
  zorvane record --platform virtual           a made-up desktop, on a machine without one

What you name is recorded; the main display if you name nothing.

Without -o the bundle is a new directory in the current one, named after date and time, such as
2024-03-01T140509+0100-Ab3dE.zorvane. Its path is printed at the end.

Ctrl-C, SIGTERM and SIGHUP stop the recording cleanly; a second Ctrl-C leaves at once.

Exit status: 0 complete, 2 wrong usage, 3 saved with errors, 4 nothing recorded.)";

constexpr auto sourcesHelp =
    R"(KIND is displays, windows, cameras, microphones, applications or devices (connected phones); without one, all are
listed.

Examples:
  zorvane sources                             a table of everything
  zorvane sources windows cameras             these only
  zorvane sources --json | jq .displays[0].id for scripts: one JSON object, a list for each kind
  zorvane sources --watch                     what comes, changes and goes, until Ctrl-C
  zorvane sources --watch --json              the same as one JSON object a line

Exit status: 0 listed, also if there is nothing; 2 wrong usage.)";

constexpr auto infoHelp = R"(Examples:
  zorvane info talk.zorvane                   length, size and tracks of each file
  zorvane info --json talk.zorvane            the same as one JSON object

Exit status: 0 all is well, 2 wrong usage, 3 a file is missing or broken, 4 no bundle there.)";

constexpr auto permissionsHelp = R"(Examples:
  zorvane permissions                         what may be recorded, why, and how to get what may not
  zorvane permissions --json                  the same as one JSON object

Exit status: 0 told, whatever is allowed; 2 wrong usage.)";

/// What CLI11 needs to turn a parser that throws into an error of the option's.
template <class Parse>
std::string problemOf(Parse parse, const std::string& text) {
    try {
        parse(text);
        return {};
    } catch (const std::invalid_argument& problem) {
        return problem.what();
    }
}

/// An option that takes one of a few names.
template <class Value, class Target>
void addChoice(CLI::App& app, const std::string& name, const std::vector<std::pair<std::string, Value>>& choices,
               Target& target, const std::string& help) {
    std::vector<std::string> names;
    for (const auto& choice : choices) {
        names.push_back(choice.first);
    }
    const auto choose = [choices, &target](const std::string& text) {
        target = std::ranges::find(choices, text, [](const auto& choice) { return choice.first; })->second;
    };
    app.add_option_function<std::string>(name, choose, help)
        ->type_name(fmt::format("{}", fmt::join(names, "|")))
        ->check(CLI::IsMember(names).description(""));
}

std::vector<std::pair<std::string, ZVLogLevel>> logLevels() {
    std::vector<std::pair<std::string, ZVLogLevel>> levels;
    for (const ZVLogLevel level : allLogLevels) {
        levels.emplace_back(rawValue(level), level);
    }
    return levels;
}

/// An option whose text is a value of its own kind; `parse` throws what is wrong with it.
template <class Parse, class Target>
CLI::Option* addParsed(CLI::App& app, const std::string& name, Parse parse, Target& target, const std::string& help) {
    return app
        .add_option_function<std::string>(
            name, [&target, parse](const std::string& text) { target = parse(text); }, help)
        ->check([parse](const std::string& text) { return problemOf(parse, text); });
}

void addPlatform(CLI::App& app, ZVPlatformKind& platform) {
    addChoice<ZVPlatformKind>(app, "--platform",
                              {{"linux", ZVPlatformKind::linuxDesktop}, {"virtual", ZVPlatformKind::virtualDesktop}},
                              platform, "Desktop to use: linux, or a virtual one for trying things out");
}

/// An option that may be given several times; `parse` turns each text into a value, and throws what is wrong with it.
/// A value that comes twice counts once.
template <class Parse, class Value>
CLI::Option* addList(CLI::App& app, const std::string& name, Parse parse, std::vector<Value>& target,
                     const std::string& help) {
    const auto take = [&target, parse](const std::vector<std::string>& texts) {
        target.clear();
        for (const std::string& text : texts) {
            Value value = parse(text);
            if (std::ranges::find(target, value) == target.end()) {
                target.push_back(std::move(value));
            }
        }
    };
    return app.add_option_function<std::vector<std::string>>(name, take, help)
        ->check([parse](const std::string& text) { return problemOf(parse, text); })
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addDevices(CLI::App& app, RecordOptions& options) {
    const auto asItIs = [](const std::string& text) { return text; };
    addList(app, "--camera", asItIs, options.cameras,
            "Camera to record, with the sound of the first microphone: default, or its id; may be repeated")
        ->type_name("default|ID");
    addList(app, "--microphone", asItIs, options.microphones,
            "Microphone to record: default, or its id; may be repeated")
        ->type_name("default|ID");
    addList(app, "--device", asItIs, options.devices,
            "Phone or tablet to record, or the capture card that shows its screen: its id; may be repeated")
        ->type_name("ID");
}

void addSound(CLI::App& app, RecordOptions& options) {
    auto* system = app.add_flag("--system-audio", options.systemAudio, "Record the sound of all applications");
    addList(app, "--exclude-process", parseProcess, options.excludedProcesses,
            "Leave this process out of the system's sound; may be repeated")
        ->type_name("PID")
        ->needs(system);
    addList(app, "--application-audio", parseProcess, options.applications,
            "Record the sound of this process, in a file of its own; may be repeated")
        ->type_name("PID");
}

void addWhat(CLI::App& app, RecordOptions& options) {
    auto* display = addParsed(app, "--display", parseDisplay, options.display, "Display to record: main, or its id");
    display->type_name("main|ID");
    auto* window = addParsed(app, "--window", parseWindow, options.windowID,
                             "Record where this window is instead, with nothing but its application");
    window->type_name("ID")->excludes(display);
    addParsed(app, "--exclude", parseExclusions, options.excluding,
              "Leave out of a display's picture: current (windows of this process), indicator (the desktop's sign "
              "that it is being recorded)")
        ->type_name("WHAT[,WHAT]")
        ->excludes(window);
    app.add_flag("--audio", options.displayAudio, "Put the system's sound into the display's movie")->excludes(window);
    app.add_flag("--mouse", options.mouse, "Write what the mouse does to a JSON file, with the cursor's changes");
    app.add_flag("--keyboard", options.keyboard, "Write every key that is pressed to that file, passwords too");
    app.add_flag("--top-window", options.topWindow, "Write which window is in front, and where, to a JSON file")
        ->excludes(window);
    addDevices(app, options);
    addSound(app, options);
}

/// What options mean together.
void requireSense(const RecordOptions& options) {
    const bool hasPicture = options.display || options.windowID || !namesOtherSource(options);
    const std::pair<bool, const char*> aboutPictures[] = {{options.displayAudio, "--audio"},
                                                          {!options.excluding.empty(), "--exclude"},
                                                          {options.mouse, "--mouse"},
                                                          {options.keyboard, "--keyboard"},
                                                          {options.topWindow, "--top-window"}};
    for (const auto& [isGiven, name] : aboutPictures) {
        if (isGiven && !hasPicture) {
            throw CLI::ValidationError(name, "It belongs to a display's picture. Add --display main.");
        }
    }
    if (options.events && !options.json) {
        throw CLI::ValidationError("--events", "Events are JSON. Add --json.");
    }
}

void addRecord(CLI::App& app, RecordOptions& options) {
    app.footer(recordHelp);
    addWhat(app, options);
    addChoice<ZVColorSpace>(app, "--color-space",
                            {{"sRGB", ZVColorSpace::sRGB}, {"displayP3", ZVColorSpace::displayP3}}, options.colorSpace,
                            "Colours: sRGB (H.264) or displayP3 (HEVC, 10 bits)");
    app.add_flag_callback(
        "--no-cursor", [&] { options.showsCursor = false; }, "Leave the mouse pointer out");
    addParsed(app, "--seconds", parseSeconds, options.seconds, "Stop by itself after so long; fractions are fine")
        ->type_name("N");
    app.add_option("-o,--output", options.output, "Bundle directory to make; it must not exist yet")->type_name("DIR");
    addPlatform(app, options.platform);
    app.add_flag("--segmented", options.segmented, "Write segments of six seconds and HLS playlists, not single files");
    app.add_flag("--json", options.json, "Print one JSON object about the recording at the end");
    app.add_flag("--events", options.events,
                 "With --json: one object a line, for the start, each segment, what befalls a source, and the end");
    app.add_flag("-q,--quiet", options.quiet, "Say nothing but errors and the bundle's path");
    addChoice<ZVLogLevel>(app, "--log-level", logLevels(), options.logLevel,
                          "Show log lines of at least this level on standard error");
    app.final_callback([&options] { requireSense(options); });
}

void addSources(CLI::App& app, SourcesOptions& options) {
    app.footer(sourcesHelp);
    std::vector<std::string> kinds;
    for (const SourceKind kind : allSourceKinds) {
        kinds.emplace_back(rawValue(kind));
    }
    app.add_option_function<std::vector<std::string>>(
           "KIND",
           [&options](const std::vector<std::string>& names) {
               options.kinds.clear();
               std::ranges::copy_if(allSourceKinds, std::back_inserter(options.kinds), [&](SourceKind kind) {
                   return std::ranges::find(names, rawValue(kind)) != names.end();
               });
           },
           "What to list")
        ->type_name("")
        ->check(CLI::IsMember(kinds).description(""));
    app.add_flag("--watch", options.watch, "Go on, and print each change as it comes");
    app.add_flag("--json", options.json, "Print one JSON object; with --watch, one a line");
    addPlatform(app, options.platform);
    addChoice<ZVLogLevel>(app, "--log-level", logLevels(), options.logLevel,
                          "Show log lines of at least this level on standard error");
}

void addInfo(CLI::App& app, InfoOptions& options) {
    app.footer(infoHelp);
    app.add_option("BUNDLE", options.bundle, "Directory of a recording")->required()->type_name("");
    app.add_flag("--json", options.json, "Print one JSON object");
}

void addPermissions(CLI::App& app, PermissionsOptions& options) {
    app.footer(permissionsHelp);
    addPlatform(app, options.platform);
    app.add_flag("--json", options.json, "Print one JSON object");
}

/// A negative number behind an option is its value; left alone it would be taken for another option.
std::vector<std::string> joinedArguments(int count, const char* const* arguments) {
    std::vector<std::string> joined;
    for (int index = 1; index < count; index++) {
        const std::string_view argument = arguments[index];
        const bool isNegative = argument.size() > 1 && argument[0] == '-' && std::isdigit(argument[1]) != 0;
        if (isNegative && !joined.empty() && joined.back() == "--seconds") {
            joined.back().append("=").append(argument);
        } else {
            joined.emplace_back(argument);
        }
    }
    return {joined.rbegin(), joined.rend()};  // the order in which CLI11 consumes them
}

std::string problem(const CLI::App* app, const CLI::Error& error) {
    const bool hasCommand = !app->get_subcommands().empty();
    const std::string help = hasCommand ? app->get_subcommands().front()->get_name() + " --help" : "--help";
    const std::string text =
        hasCommand ? error.what() : R"(Say what to do: "record", "sources", "info BUNDLE" or "permissions".)";
    return fmt::format("zorvane: {}\nFor more: zorvane {}\n", printable(text), help);
}

/// Help and version are results like any other; what is wrong goes to standard error.
ExitStatus report(const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream result;
    const bool isWrong = app.exit(error, result, std::cerr) != 0;
    printResult(result.str());
    return isWrong ? ExitStatus::wrongUsage : ExitStatus::complete;
}

}  // namespace

Command parseCommandLine(int argumentCount, const char* const* arguments) {
    CLI::App app(overview, "zorvane");
    app.set_version_flag("--version", fmt::format("zorvane {}", ZorvaneVersionString));
    app.require_subcommand(1);
    app.failure_message(&problem);
    RecordOptions recordOptions;
    SourcesOptions sourcesOptions;
    InfoOptions infoOptions;
    PermissionsOptions permissionsOptions;
    CLI::App* record = app.add_subcommand("record", "Record displays, windows, cameras and sound");
    addRecord(*record, recordOptions);
    CLI::App* sources = app.add_subcommand("sources", "List what there is to record");
    addSources(*sources, sourcesOptions);
    addInfo(*app.add_subcommand("info", "Tell what is in a bundle"), infoOptions);
    CLI::App* permissions = app.add_subcommand("permissions", "Tell what may be recorded");
    addPermissions(*permissions, permissionsOptions);
    try {
        app.parse(joinedArguments(argumentCount, arguments));
    } catch (const CLI::ParseError& error) {
        return report(app, error);
    }
    if (record->parsed()) {
        return recordOptions;
    }
    if (sources->parsed()) {
        return sourcesOptions;
    }
    if (permissions->parsed()) {
        return permissionsOptions;
    }
    return infoOptions;
}

}  // namespace zorvane::cli
