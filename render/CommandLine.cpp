#include "render/CommandLine.h"

#include "audiounit/Identity.h"
#include "audiounit/ParameterText.h"
#include "commandline/ArgumentParser.h"
#include "commandline/Arguments.h"
#include "commandline/Errors.h"
#include "commandline/Interruption.h"
#include "engine/ParameterAddress.h"
#include "render/Listing.h"
#include "render/Origin.h"
#include "render/RenderJob.h"
#include "render/RenderOptions.h"

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

constexpr const char* programName = "velotrine";

struct ListArguments
{
    std::string what;
    bool asJson = false;
};

/// What was typed, command by command.
struct Arguments
{
    RenderArguments render;
    ListArguments list;
    std::string shownFile;
    std::string helpedCommand;
};

constexpr const char* renderExamples = R"(Examples:
  velotrine render --preset "Drum Circle" --out drums.wav
  velotrine render --preset 7 --seconds 60 --tempo 96 --out chimes.flac
  velotrine render --preset 4 --set activity=0.7 --set rootNote=F# --midi notes.mid --out precession.wav
  velotrine render --state mine.json --tail none --out - | sox - loud.wav norm -1
  velotrine render --take grows.velotrine-take --stems --out grows.wav

The sound is exactly as long as asked for, then the clock stops and the notes ring out (--tail).
Settings apply in this order: --preset, --state or --take, --set, --tempo, --seed.)";

constexpr const char* mainExamples = R"(Examples:
  velotrine list presets
  velotrine render --preset "Drum Circle" --bars 16 --out drums.wav
  velotrine help render)";

void addRender(ArgumentParser& parser, RenderArguments& arguments)
{
    auto render = parser.addCommand("render", "Render a piece to an audio file");
    render.addOption("--preset", arguments.preset, "Factory preset to start from", "NAME|NUMBER");
    render.addOption("--state", arguments.state,
                     "State to load, as --save-state writes it; - is standard input", "FILE.json|-");
    render.addOption("--take", arguments.take, "Take to play, instead of a preset; - is standard input",
                     "FILE.velotrine-take|-");
    render.addOption("--set", arguments.settings, "Parameter to change; may be repeated", "IDENTIFIER=VALUE");
    render.addOption("--seed", arguments.seed, "Other dice: 0 to 4294967295 [12345]", "N");
    render.addOption("--bars", arguments.bars, "Length in bars [16, or the take's]", "N");
    render.addOption("--seconds", arguments.seconds, "Length in seconds, instead of bars", "S");
    render.addOption("--from", arguments.from, "Bars that are played unheard before writing begins [0]",
                     "BAR");
    render.addOption("--tempo", arguments.tempo,
                     "Tempo at the beginning, " + shortestText(minTempo) + " to " + shortestText(maxTempo) +
                         " [the preset's]",
                     "BPM");
    render.addOption("--sample-rate", arguments.sampleRate, "Sample rate [48000, or the take's]", "HZ");
    render.addOption("--block", arguments.block, "Render cycle; notes start at the first frame of one [32]",
                     "FRAMES");
    render.addOption("--tail", arguments.tail, "What follows the asked length [auto: until all is silent]",
                     "auto|none|SECONDS");
    render.addOption("--format", arguments.format, "Sample format [s24]", "s16|s24|f32");
    render.addOption("--midi", arguments.midi, "Also write the notes as a MIDI file", "FILE.mid");
    render.addOption("--save-state", arguments.saveState, "Also write the settings", "FILE.json");
    render.addFlag("--stems", arguments.stems, "Also write each ring alone, to FILE-R1.wav and so on");
    render.addFlag("--no-clobber", arguments.noClobber, "Replace no file that is already there");
    render.addFlag("--quiet", arguments.quiet, "No progress bar");
    render.addOption("--out", arguments.out,
                     "Where the sound goes; - is standard output; may be missing with --midi",
                     "FILE.wav|FILE.flac|-");
    render.addExamples(renderExamples);
}

void addList(ArgumentParser& parser, ListArguments& arguments)
{
    auto list = parser.addCommand("list", "List the presets or the parameters");
    list.addOption("what", arguments.what, "What to list", "presets|parameters");
    list.addFlag("--json", arguments.asJson, "As JSON, with all there is to know");
    list.addExamples("Examples:\n  velotrine list presets\n  velotrine list parameters --json");
}

void addShow(ArgumentParser& parser, std::string& file)
{
    auto show = parser.addCommand("show", "Show the settings with which a WAV, FLAC or MIDI file was made");
    show.addOption("file", file, "A file that \"velotrine render\" has written",
                   "FILE.wav|FILE.flac|FILE.mid");
    show.addExamples("Examples:\n  velotrine show drums.wav\n"
                     "  velotrine show drums.wav | velotrine render --state - --out again.wav");
}

void addHelp(ArgumentParser& parser, std::string& command)
{
    auto help = parser.addCommand("help", "Say what there is, or what a command can do");
    help.addOption("command", command, "One of the commands", "COMMAND");
    help.addExamples("Examples:\n  velotrine help\n  velotrine help render");
}

void addAll(ArgumentParser& parser, Arguments& arguments)
{
    parser.program().addExamples(mainExamples);
    addRender(parser, arguments.render);
    addList(parser, arguments.list);
    addShow(parser, arguments.shownFile);
    addHelp(parser, arguments.helpedCommand);
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

void runShow(const std::string& file)
{
    if (file.empty())
        throw UsageError("show", "say which file: a WAV, FLAC or MIDI file");
    print(stateTextIn(file));
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
    Arguments typed;
    ArgumentParser parser(programName, identity::nameAndVersion);
    addAll(parser, typed);

    const auto request = parser.parse(arguments);
    if (request.answer)
        return print(*request.answer);
    if (request.command == "render")
        return runRender(typed.render);
    if (request.command == "list")
        return runList(typed.list);
    if (request.command == "show")
        return runShow(typed.shownFile);
    if (request.command == "help")
        return print(parser.helpFor(typed.helpedCommand));
    throw UsageError("command", "is missing; say render, list or show" + parser.helpHint());
}

int complain(const std::string& message, int exitCode)
{
    std::fprintf(stderr, "%s: %s\n", programName, asOneLine(message).c_str());
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

ProgramDescription commandLineDescription()
{
    Arguments nothing;
    ArgumentParser parser(programName, identity::nameAndVersion);
    addAll(parser, nothing);
    return parser.description();
}

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
