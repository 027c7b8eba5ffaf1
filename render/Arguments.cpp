#include "render/Arguments.h"

#include "audiounit/ParameterText.h"
#include "render/Errors.h"
#include "render/NearestName.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace velotrine {

namespace {

/// The subcommand that was chosen, or the program itself.
const CLI::App& chosen(const CLI::App& app)
{
    const auto subcommands = app.get_subcommands();
    return subcommands.empty() ? app : *subcommands.front();
}

/// What to type for a command: the program's name, and the subcommand's behind it.
std::string spokenName(const CLI::App& command)
{
    const auto* const program = command.get_parent();
    return program == nullptr ? command.get_name() : program->get_name() + " " + command.get_name();
}

std::string hintFor(const CLI::App& command)
{
    return " (\"" + spokenName(command) + " --help\" shows what there is)";
}

UsageError unexpectedArgument(const CLI::App& app)
{
    const auto& command = chosen(app);
    const auto extras = app.remaining(true);
    const std::string first = extras.empty() || extras.front().empty() ? "\"\"" : extras.front();
    const auto typed = first.substr(0, first.find('='));
    if (command.get_option_no_throw(typed) != nullptr)
        return {first, "belongs behind \"" + spokenName(command) + "\""};

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

/// @param arguments  those behind the command
void checkValues(const CLI::App& command, std::span<const char* const> arguments)
{
    const auto hint = hintFor(command);
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

void checkAllValues(const CLI::App& app, std::span<const char* const> arguments)
{
    constexpr std::size_t programAndCommand = 2;
    const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
    if (commands.empty() && !arguments.empty())
        checkValues(app, arguments.subspan(1));
    for (const auto* const command : commands) {
        if (arguments.size() >= programAndCommand && command->get_name() == arguments[1])
            checkValues(*command, arguments.subspan(programAndCommand));
    }
}

/// @param message  the parser's, which begins with the option's name
UsageError wrongNumberOfValues(const std::string& message, const CLI::App& app)
{
    const bool isMissing = message.find("missing") != std::string::npos;
    return {message.substr(0, message.find(':')),
            (isMissing ? "needs a value behind it" : "can be given only once") + helpHint(app)};
}

} // namespace

std::string helpHint(const CLI::App& app)
{
    return hintFor(chosen(app));
}

void parseArguments(CLI::App& app, std::span<const char* const> arguments)
{
    try {
        checkAllValues(app, arguments);
        app.parse(static_cast<int>(arguments.size()), arguments.data());
    } catch (const CLI::CallForHelp&) {
        throw;
    } catch (const CLI::CallForVersion&) {
        throw;
    } catch (const CLI::ExtrasError&) {
        throw unexpectedArgument(app);
    } catch (const CLI::ArgumentMismatch& mismatch) {
        throw wrongNumberOfValues(mismatch.what(), app);
    } catch (const CLI::ParseError& error) {
        throw UsageError(chosen(app).get_name(), error.what() + helpHint(app));
    }
}

std::string inQuotes(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

double numberArgument(const NumberRule& rule, const std::string& text)
{
    const auto value = numberFromText(text);
    const bool right = value && *value >= rule.min && *value <= rule.max &&
                       (!rule.wholeOnly || *value == std::floor(*value));
    if (!right)
        throw UsageError(rule.option, inQuotes(text) + " will not do; give " + rule.expected);
    return *value;
}

int framesArgument(const char* option, const std::string& text)
{
    constexpr double maxFrames = 8192.0;
    return static_cast<int>(
        numberArgument({option, 1.0, maxFrames, true, "a whole number of frames from 1 to 8192"}, text));
}

int sampleRateArgument(const char* option, const std::string& text)
{
    constexpr double minRate = 8000.0;
    constexpr double maxRate = 768000.0;
    return static_cast<int>(
        numberArgument({option, minRate, maxRate, true, "a whole number of Hz from 8000 to 768000"}, text));
}

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

} // namespace velotrine
