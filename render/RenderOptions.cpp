#include "render/RenderOptions.h"

#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "commandline/Arguments.h"
#include "commandline/Errors.h"
#include "commandline/NearestName.h"
#include "commandline/OutputFile.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <limits>
#include <set>
#include <string_view>

namespace velotrine {

namespace {

namespace fs = std::filesystem;

constexpr double maxBars = 43200.0; ///< a day at 120 beats a minute
constexpr double maxTailSeconds = 3600.0;

std::string lowerCase(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::int64_t presetNumber(const std::string& text)
{
    if (const auto number = presetFromText(text))
        return static_cast<std::int64_t>(*number);
    throw UsageError("--preset", "there is no preset " + inQuotes(text) + suggestion(text, presetNames()) +
                                     " (\"velotrine list presets\" shows all " + std::to_string(presetCount) +
                                     ")");
}

std::string scaleList()
{
    std::string list;
    for (const auto name : scaleNames)
        list += std::string(name) + ", ";
    list.pop_back();
    return list;
}

std::string allowedValues(const ParameterInfo& parameter)
{
    const auto range = "from " + shortestText(parameter.minValue) + " to " + shortestText(parameter.maxValue);
    switch (parameter.kind) {
    case ParameterKind::root:
        return "a note name such as F# or Bb, or a whole number " + range;
    case ParameterKind::scale:
        return scaleList() + " or a whole number " + range;
    case ParameterKind::toggle:
        return "on or off";
    case ParameterKind::spots:
    case ParameterKind::octave:
        return "a whole number " + range;
    case ParameterKind::amount:
        return "a number " + range + ", or a percentage";
    case ParameterKind::turns:
    case ParameterKind::tempo:
        break;
    }
    return "a number " + range;
}

const ParameterInfo& parameterNamed(const std::string& setting, const std::string& identifier)
{
    if (const auto* const parameter = parameterWithIdentifier(identifier))
        return *parameter;

    std::vector<std::string> identifiers;
    for (const auto& info : parameterTable())
        identifiers.push_back(info.identifier);
    throw UsageError("--set " + setting, "there is no parameter " + inQuotes(identifier) +
                                             suggestion(identifier, identifiers) +
                                             " (\"velotrine list parameters\" shows all " +
                                             std::to_string(parameterTable().size()) + ")");
}

std::pair<ParameterAddress, float> parameterSetting(const std::string& setting)
{
    const auto equals = setting.find('=');
    if (equals == std::string::npos || equals == 0)
        throw UsageError("--set " + setting, "write IDENTIFIER=VALUE, for instance activity=0.7");

    const auto& parameter = parameterNamed(setting, setting.substr(0, equals));
    const auto text = setting.substr(equals + 1);
    const auto value = parameterFromText(parameter, text);
    const bool right = value && *value >= parameter.minValue && *value <= parameter.maxValue &&
                       (!parameter.isDiscrete() || *value == std::floor(*value));
    if (!right)
        throw UsageError("--set " + setting, inQuotes(text) + " will not do for " + parameter.name +
                                                 "; give " + allowedValues(parameter));
    return {parameter.address, *value};
}

float tempoArgument(const std::string& text)
{
    const auto expected = shortestText(minTempo) + " to " + shortestText(maxTempo) + " beats a minute";
    return static_cast<float>(numberArgument({.option = "--tempo",
                                              .min = static_cast<double>(minTempo),
                                              .max = static_cast<double>(maxTempo),
                                              .wholeOnly = false,
                                              .expected = expected.c_str()},
                                             text));
}

SampleFormat sampleFormat(const std::string& text)
{
    if (text == "s16")
        return SampleFormat::s16;
    if (text == "s24")
        return SampleFormat::s24;
    if (text == "f32")
        return SampleFormat::f32;
    throw UsageError("--format", inQuotes(text) + " is not a format; give s16, s24 or f32");
}

bool isDevice(const std::string& path)
{
    std::error_code error;
    return fs::exists(path, error) && fs::is_other(path, error);
}

AudioContainer containerOf(const std::string& path)
{
    if (path == "-" || isDevice(path))
        return AudioContainer::wav;
    const auto ending = lowerCase(fs::path(path).extension().string());
    if (ending == ".wav")
        return AudioContainer::wav;
    if (ending == ".flac")
        return AudioContainer::flac;
    throw UsageError("--out", inQuotes(path) + " must end in .wav or .flac, or be - for standard output");
}

void readTail(const std::string& text, RenderOptions& options)
{
    if (text == "auto")
        options.tail = RenderOptions::Tail::untilSilent;
    else if (text == "none")
        options.tail = RenderOptions::Tail::none;
    else {
        options.tail = RenderOptions::Tail::fixed;
        options.tailSeconds = numberArgument(
            {"--tail", 0.0, maxTailSeconds, false, "auto, none, or a number of seconds up to 3600"}, text);
    }
}

void readLength(const RenderArguments& arguments, RenderOptions& options)
{
    if (!arguments.from.empty())
        options.fromBar = numberArgument({"--from", 0.0, maxBars, false, "a number of bars from 0 to 43200"},
                                         arguments.from);
    if (!arguments.bars.empty() && !arguments.seconds.empty())
        throw UsageError("--seconds", "the length is already given by --bars; give one of the two");
    constexpr double shortest = 1.0e-6;
    if (!arguments.bars.empty())
        options.bars = numberArgument({"--bars", shortest, maxBars, false, "a number above 0, at most 43200"},
                                      arguments.bars);
    if (!arguments.seconds.empty())
        options.seconds = numberArgument(
            {"--seconds", shortest, maxRenderSeconds, false, "a number above 0, at most 86400"},
            arguments.seconds);
}

void checkPaths(const RenderOptions& options)
{
    if (options.midiPath == "-" || options.saveStatePath == "-")
        throw UsageError(options.midiPath == "-" ? "--midi" : "--save-state",
                         "only --out can be standard output; give a file name");
    std::set<fs::path> seen;
    std::vector<std::pair<const char*, std::string>> outputs{
        {"--out", options.outPath}, {"--midi", options.midiPath}, {"--save-state", options.saveStatePath}};
    for (int ring = 0; options.stems && ring < ringCount; ++ring)
        outputs.emplace_back("--stems", stemPath(options.outPath, ring));
    for (const auto& [option, path] : outputs)
        if (!path.empty() && !seen.insert(destinationOf(path)).second)
            throw UsageError(option, inQuotes(path) + " is already the name of another output");
}

void readSound(const RenderArguments& arguments, RenderOptions& options)
{
    options.container = containerOf(options.outPath);
    if (options.container == AudioContainer::flac && options.format == SampleFormat::f32)
        throw UsageError("--format", "a FLAC file cannot hold f32; give s16 or s24, or a .wav file");
    if (options.sampleRate)
        checkContainer(options, *options.sampleRate);
    options.stems = arguments.stems;
    if (options.stems && (options.outPath == "-" || isDevice(options.outPath)))
        throw UsageError("--stems", "needs a file name behind --out, from which the rings' names are made");
}

void readOutput(const RenderArguments& arguments, RenderOptions& options)
{
    options.outPath = arguments.out;
    options.midiPath = arguments.midi;
    options.saveStatePath = arguments.saveState;
    if (arguments.noClobber)
        options.existing = OutputFile::Existing::kept;
    if (!arguments.format.empty())
        options.format = sampleFormat(arguments.format);
    if (!options.outPath.empty())
        readSound(arguments, options);
    else if (options.midiPath.empty() || arguments.stems)
        throw UsageError("--out", "is missing; say where the sound goes, for instance --out drums.wav");
    checkPaths(options);
}

void readBeginning(const RenderArguments& arguments, RenderOptions& options)
{
    if (arguments.preset.empty() && arguments.state.empty() && arguments.take.empty())
        throw UsageError("--preset", "is missing; say what to play, for instance --preset \"Drum Circle\"");
    if (!arguments.take.empty() && !(arguments.preset.empty() && arguments.state.empty()))
        throw UsageError("--take", "says itself how it begins; change that by --set, --tempo and --seed, and "
                                   "leave out --preset and --state");
    options.statePath = arguments.state;
    options.takePath = arguments.take;
    if (!arguments.preset.empty())
        options.presetNumber = presetNumber(arguments.preset);
    for (const auto& setting : arguments.settings)
        options.settings.push_back(parameterSetting(setting));
    if (!arguments.tempo.empty())
        options.tempo = tempoArgument(arguments.tempo);
    constexpr double largestSeed = std::numeric_limits<std::uint32_t>::max();
    if (!arguments.seed.empty())
        options.seed = static_cast<std::uint32_t>(numberArgument(
            {"--seed", 0.0, largestSeed, true, "a whole number from 0 to 4294967295"}, arguments.seed));
}

} // namespace

RenderOptions renderOptions(const RenderArguments& arguments)
{
    RenderOptions options;
    options.quiet = arguments.quiet;
    readBeginning(arguments, options);
    if (!arguments.sampleRate.empty())
        options.sampleRate = sampleRateArgument("--sample-rate", arguments.sampleRate);
    if (!arguments.block.empty())
        options.blockFrames = framesArgument("--block", arguments.block);
    if (!arguments.tail.empty())
        readTail(arguments.tail, options);
    readLength(arguments, options);
    readOutput(arguments, options);
    return options;
}

void checkContainer(const RenderOptions& options, int sampleRate)
{
    if (!AudioFileWriter::isPossible({options.container, options.format, sampleRate, 0}))
        throw UsageError("--sample-rate",
                         "a FLAC file cannot hold " + std::to_string(sampleRate) +
                             " Hz; give a whole number of tens up to 655350, or a .wav file");
}

std::string stemPath(const std::string& outPath, int ring)
{
    auto path = fs::path(outPath);
    const auto ending = path.extension().string();
    const auto name = path.stem().string() + "-R" + std::to_string(ring + 1) + ending;
    return path.replace_filename(name).string();
}

} // namespace velotrine
