#include "host/HostOptions.h"

#include "audiounit/Identity.h"
#include "commandline/ArgumentParser.h"
#include "commandline/Arguments.h"
#include "commandline/Errors.h"
#include "commandline/NearestName.h"
#include "host/DesktopScale.h"
#include "takes/SettingsFile.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace velotrine {

namespace {

constexpr int usageWrong = 2;

constexpr const char* examples = R"(Examples:
  velotrine-app
  velotrine-app --list-devices
  velotrine-app --device system --buffer 128
  velotrine-app --scale 1.5
  velotrine-app starfish.json
  velotrine-app --session studio.json)";

/// What was typed, option by option; empty where nothing was.
struct HostArguments
{
    bool listDevices = false;
    bool manual = false;
    std::string device;
    std::string sampleRate;
    std::string buffer;
    std::string scale;
    std::string session;
    std::vector<std::string> files;
};

ProgramEnd complaint(const std::string& program, const UsageError& error)
{
    return {.exitCode = usageWrong, .out = {}, .err = program + ": " + asOneLine(error.what()) + "\n"};
}

void addAll(ArgumentParser& parser, HostArguments& arguments)
{
    auto command = parser.program();
    command.addFlag("--list-devices", arguments.listDevices, "List the audio devices, the default first");
    command.addFlag("--manual", arguments.manual, "Open the manual in the desktop's browser");
    command.addOption("--device", arguments.device,
                      "Audio device to play on [JACK if it runs, else ALSA's default]", "NAME");
    command.addOption("--sample-rate", arguments.sampleRate,
                      "Sample rate; the device's nearest is taken [its own]", "HZ");
    command.addOption("--buffer", arguments.buffer, "Buffer size; the device's nearest is taken [its own]",
                      "FRAMES");
    command.addOption("--scale", arguments.scale,
                      "How many times its plain size everything is [the desktop's scale]", "NUMBER");
    command.addOption("--session", arguments.session,
                      "Begin with the settings of this file, if it is there, and keep it up to date",
                      "FILE.json");
    command.addOption("file", arguments.files, "A state, or a take with whose settings to begin",
                      "FILE.json|FILE.velotrine-take");
    command.addExamples(examples);
}

/// At most one; a name must not be empty.
std::string onlyFile(const std::vector<std::string>& files, const ArgumentParser& parser)
{
    const auto refuse = [&parser](const std::string& file) {
        throw UsageError(file.empty() ? inQuotes(file) : file, "is not known here" + parser.helpHint());
    };
    if (files.size() > 1)
        refuse(files[1]);
    if (files.size() == 1 && files[0].empty())
        refuse(files[0]);
    return files.empty() ? "" : files[0];
}

HostOptions understood(const std::string& program, const HostArguments& arguments,
                       const ArgumentParser& parser)
{
    HostOptions options;
    options.program = program;
    options.listDevices = arguments.listDevices;
    options.manual = arguments.manual;
    options.file = onlyFile(arguments.files, parser);
    options.session = arguments.session;
    if (!arguments.device.empty())
        options.device.deviceName = arguments.device;
    if (!arguments.sampleRate.empty())
        options.device.sampleRate = sampleRateArgument("--sample-rate", arguments.sampleRate);
    if (!arguments.buffer.empty())
        options.device.bufferFrames = framesArgument("--buffer", arguments.buffer);
    if (!arguments.scale.empty())
        options.scale = numberArgument(
            {"--scale", smallestScale, largestScale, false, "a number from 0.5 to 8"}, arguments.scale);
    return options;
}

} // namespace

std::variant<HostOptions, ProgramEnd> parseHostOptions(std::span<const char* const> arguments)
{
    const auto program = std::filesystem::path(arguments[0]).filename().string();
    HostArguments typed;
    ArgumentParser parser(program.c_str(), identity::nameAndVersion);
    addAll(parser, typed);

    try {
        const auto request = parser.parse(arguments);
        if (request.answer)
            return ProgramEnd{.exitCode = 0, .out = *request.answer, .err = {}};
        return understood(program, typed, parser);
    } catch (const UsageError& error) {
        return complaint(program, error);
    }
}

ProgramDescription hostDescription()
{
    HostArguments nothing;
    ArgumentParser parser(HostOptions().program.c_str(), identity::nameAndVersion);
    addAll(parser, nothing);
    return parser.description();
}

ProgramEnd deviceListing(const HostOptions& options, const std::vector<OutputDevice>& devices)
{
    if (devices.empty())
        return {.exitCode = 0, .out = {}, .err = options.program + ": there is no audio device\n"};
    ProgramEnd end;
    for (const auto& device : devices)
        end.out += device.type + "  " + device.name + "\n";
    return end;
}

std::optional<ProgramEnd> refuseUnknownDevice(const HostOptions& options,
                                              const std::vector<OutputDevice>& devices)
{
    const auto& wanted = options.device.deviceName;
    if (!wanted || std::ranges::count(devices, *wanted, &OutputDevice::name) > 0)
        return std::nullopt;
    std::vector<std::string> names(devices.size());
    std::ranges::transform(devices, names.begin(), &OutputDevice::name);
    return complaint(options.program, {"--device", "there is no audio device " + inQuotes(*wanted) +
                                                       suggestion(*wanted, names) + " (\"" + options.program +
                                                       " --list-devices\" shows all)"});
}

std::optional<ProgramEnd> refuseSession(const HostOptions& options)
{
    std::error_code error;
    if (options.session.empty() || !std::filesystem::exists(options.session, error))
        return std::nullopt;
    const auto read = settingsFromFile(options.session, {});
    if (read.settings && !read.areOfATake)
        return std::nullopt;
    return complaint(options.program, {"--session " + options.session,
                                       read.settings ? "it is a take; give a state" : read.error});
}

} // namespace velotrine
