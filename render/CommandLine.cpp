#include "render/CommandLine.h"

#include "audiounit/ParameterText.h"
#include "engine/ParameterAddress.h"
#include "render/Arguments.h"
#include "render/Errors.h"
#include "render/Interruption.h"
#include "render/Listing.h"
#include "render/RenderJob.h"
#include "render/RenderOptions.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <span>
#include <string>

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
    render
        .add_option("--tempo", arguments.tempo,
                    "Tempo, " + shortestText(minTempo) + " to " + shortestText(maxTempo) + " [the preset's]")
        ->type_name("BPM");
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
        parseArguments(app, arguments);
    } catch (const CLI::CallForHelp&) {
        return print(app.help());
    } catch (const CLI::CallForVersion& version) {
        return print(std::string(version.what()) + "\n");
    }

    if (app.got_subcommand("render"))
        return runRender(renderArguments);
    if (app.got_subcommand("list"))
        return runList(listArguments);
    throw UsageError("command", "is missing; say render or list" + helpHint(app));
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
