#include "render/CommandLine.h"

#include "render/Errors.h"
#include "render/Interruption.h"
#include "render/Listing.h"
#include "render/NearestName.h"
#include "render/RenderJob.h"
#include "render/RenderOptions.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace velotrine {

namespace {

enum ExitCode
{
    done = 0,
    workFailed = 1,
    usageWrong = 2,
    interrupted = 128, ///< plus the signal's number
};

struct ListArguments
{
    std::string what;
    bool asJson = false;
};

constexpr const char* renderExamples = R"(Examples:
  velotrine render --preset "Drum Circle" --out drums.wav
  velotrine render --preset 7 --seconds 60 --tempo 96 --out chimes.flac
  velotrine render --preset 4 --set activity=0.7 --set rootNote=F# --midi notes.mid --out precession.wav
  velotrine render --state mine.json --tail none --out - | sox - loud.wav norm -1

The sound is exactly as long as asked for, then the clock stops and the notes ring out (--tail).
Settings apply in this order: --preset, --state, --set, --tempo.)";

constexpr const char* mainExamples = R"(Examples:
  velotrine list presets
  velotrine render --preset "Drum Circle" --bars 16 --out drums.wav)";

void addRender(CLI::App& app, RenderArguments& arguments)
{
    auto& render = *app.add_subcommand("render", "Render a piece to an audio file");
    render.add_option("--preset", arguments.preset, "Factory preset to start from")->type_name("NAME|NUMBER");
    render.add_option("--state", arguments.state, "State to load, as --save-state writes it")
        ->type_name("FILE.json");
    render.add_option("--set", arguments.settings, "Parameter to change; may be repeated")
        ->type_name("IDENTIFIER=VALUE")
        ->allow_extra_args(false);
    render.add_option("--bars", arguments.bars, "Length in bars of 4/4 [16]")->type_name("N");
    render.add_option("--seconds", arguments.seconds, "Length in seconds, instead of bars")->type_name("S");
    render.add_option("--tempo", arguments.tempo, "Tempo, 40 to 300 [the preset's]")->type_name("BPM");
    render.add_option("--sample-rate", arguments.sampleRate, "Sample rate [48000]")->type_name("HZ");
    render.add_option("--block", arguments.block, "Render cycle; notes start at the first frame of one [32]")
        ->type_name("FRAMES");
    render.add_option("--tail", arguments.tail, "What follows the asked length [auto: until all is silent]")
        ->type_name("auto|none|SECONDS");
    render.add_option("--format", arguments.format, "Sample format [s24]")->type_name("s16|s24|f32");
    render.add_option("--midi", arguments.midi, "Also write the notes as a MIDI file")->type_name("FILE.mid");
    render.add_option("--save-state", arguments.saveState, "Also write the settings")->type_name("FILE.json");
    render.add_flag("--quiet", arguments.quiet, "No progress bar");
    render.add_option("--out", arguments.out, "Where the sound goes; - is standard output")
        ->type_name("FILE.wav|FILE.flac|-");
    render.footer(renderExamples);
}

void addList(CLI::App& app, ListArguments& arguments)
{
    auto& list = *app.add_subcommand("list", "List the presets or the parameters");
    list.add_option("what", arguments.what, "What to list")->type_name("presets|parameters");
    list.add_flag("--json", arguments.asJson, "As JSON, with all there is to know");
    list.footer("Examples:\n  velotrine list presets\n  velotrine list parameters --json");
}

/// The subcommand that was chosen, or the program itself.
const CLI::App& chosen(const CLI::App& app)
{
    const auto subcommands = app.get_subcommands();
    return subcommands.empty() ? app : *subcommands.front();
}

std::string helpHint(const CLI::App& app)
{
    const auto& command = chosen(app);
    const std::string name = &command == &app ? "velotrine" : "velotrine " + command.get_name();
    return " (\"" + name + " --help\" shows what there is)";
}

UsageError unexpectedArgument(const CLI::App& app)
{
    const auto& command = chosen(app);
    const auto extras = app.remaining(true);
    const std::string first = extras.empty() || extras.front().empty() ? "\"\"" : extras.front();
    const auto typed = first.substr(0, first.find('='));
    if (command.get_option_no_throw(typed) != nullptr)
        return {first, "belongs behind \"velotrine " + command.get_name() + "\""};

    std::vector<std::string> known;
    for (const auto* const option : command.get_options())
        known.push_back(option->get_name());
    for (const auto* const subcommand : command.get_subcommands({}))
        known.push_back(subcommand->get_name());
    return {first, "is not known here" + suggestion(typed, known) + helpHint(app)};
}

bool isOption(const CLI::App& command, std::string_view text)
{
    return text.starts_with("--") &&
           command.get_option_no_throw(std::string(text.substr(0, text.find('=')))) != nullptr;
}

/// Refuses what the parser would accept in silence or blame on another argument: a missing value, for which
/// it takes the next option; an empty one, which means nothing; and a flag with a value.
/// @param arguments  those behind the command
void checkValues(const CLI::App& command, std::span<const char* const> arguments)
{
    const auto hint = " (\"velotrine " + command.get_name() + " --help\" shows what there is)";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view typed = arguments[i];
        if (!isOption(command, typed))
            continue;
        const auto equals = typed.find('=');
        const std::string name(typed.substr(0, equals));
        const bool takesValue = command.get_option_no_throw(name)->get_items_expected_min() > 0;
        if (!takesValue && equals != std::string_view::npos)
            throw UsageError(name, "takes no value" + hint);
        if (!takesValue)
            continue;

        const bool isLast = equals == std::string_view::npos && ++i == arguments.size();
        const std::string_view value = isLast                             ? ""
                                       : equals == std::string_view::npos ? arguments[i]
                                                                          : typed.substr(equals + 1);
        if (value.empty() || isOption(command, value))
            throw UsageError(name, "needs a value behind it" + hint);
    }
}

void parse(CLI::App& app, std::span<const char* const> arguments)
{
    constexpr std::size_t programAndCommand = 2;
    for (const auto* const command : app.get_subcommands([](CLI::App*) { return true; })) {
        if (arguments.size() >= programAndCommand && command->get_name() == arguments[1])
            checkValues(*command, arguments.subspan(programAndCommand));
    }
    app.parse(static_cast<int>(arguments.size()), arguments.data());
}

/// @param message  the parser's, which begins with the option's name
UsageError wrongNumberOfValues(const std::string& message, const CLI::App& app)
{
    const bool isMissing = message.find("missing") != std::string::npos;
    return {message.substr(0, message.find(':')),
            (isMissing ? "needs a value behind it" : "can be given only once") + helpHint(app)};
}

void print(const std::string& text)
{
    const bool printed = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    if (!printed)
        throw WorkError("standard output: could not be written");
}

void runList(const ListArguments& arguments)
{
    if (arguments.what == "presets")
        return print(presetListing(arguments.asJson));
    if (arguments.what == "parameters")
        return print(parameterListing(arguments.asJson));
    if (arguments.what.empty())
        throw UsageError("list", "say what to list: presets or parameters");
    throw UsageError("list", "there is no list of \"" + arguments.what + "\"; say presets or parameters");
}

void runRender(const RenderArguments& arguments)
{
    if (arguments.out == "-" && ::isatty(STDOUT_FILENO) != 0)
        throw UsageError("--out",
                         "standard output is a terminal; send it on with | or >, or give a file name");
    runRenderJob(renderOptions(arguments));
}

void run(std::span<const char* const> arguments)
{
    RenderArguments renderArguments;
    ListArguments listArguments;
    CLI::App app("Velotrine: a musical instrument that plays itself", "velotrine");
    app.set_version_flag("--version", "Velotrine " VELOTRINE_VERSION);
    app.footer(mainExamples);
    addRender(app, renderArguments);
    addList(app, listArguments);
    app.require_subcommand(0, 1);

    try {
        parse(app, arguments);
    } catch (const CLI::CallForHelp&) {
        return print(app.help());
    } catch (const CLI::CallForVersion& version) {
        return print(std::string(version.what()) + "\n");
    } catch (const CLI::ExtrasError&) {
        throw unexpectedArgument(app);
    } catch (const CLI::ArgumentMismatch& mismatch) {
        throw wrongNumberOfValues(mismatch.what(), app);
    } catch (const CLI::ParseError& error) {
        throw UsageError(chosen(app).get_name(), error.what() + helpHint(app));
    }

    if (app.got_subcommand("render"))
        return runRender(renderArguments);
    if (app.got_subcommand("list"))
        return runList(listArguments);
    throw UsageError("command", "is missing; say render or list" + helpHint(app));
}

/// A message can quote what was typed, or what is in a file: whatever that is, it stays one line of bearable
/// length, and does nothing to the terminal.
std::string asOneLine(std::string message)
{
    constexpr std::size_t longest = 1000;
    constexpr std::size_t keptEnd = 200;
    constexpr std::string_view gap = " ... ";
    if (message.size() > longest)
        message.replace(longest - gap.size() - keptEnd, message.size() - longest + gap.size(), gap);
    std::ranges::replace_if(
        message, [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    return message;
}

int complain(const std::string& message, int exitCode)
{
    std::fprintf(stderr, "velotrine: %s\n", asOneLine(message).c_str());
    return exitCode;
}

/// Where a standard stream is closed, the next file that is opened would take its place and get what was
/// meant for it. What is put there instead is open the wrong way round, so that using it still fails.
void occupyStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0)
            (void)::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

} // namespace

int runCommandLine(int argumentCount, const char* const* arguments)
{
    occupyStandardStreams();
    noteSignals();
    try {
        run(std::span(arguments, static_cast<std::size_t>(argumentCount)));
        return done;
    } catch (const UsageError& error) {
        return complain(error.what(), usageWrong);
    } catch (const Interrupted& interruption) {
        return complain("interrupted; nothing was written", interrupted + interruption.signal);
    } catch (const std::exception& error) {
        return complain(error.what(), workFailed);
    }
}

} // namespace velotrine
