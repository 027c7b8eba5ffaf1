#include "commandline/ArgumentParser.h"

#include "audiounit/Identity.h"
#include "commandline/Errors.h"
#include "commandline/NearestName.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <string_view>

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
    return {first, "is not known here" + suggestion(typed, known) + hintFor(chosen(app))};
}

std::string helpOf(const CLI::App& command)
{
    return command.get_formatter()->make_help(&command, spokenName(command), CLI::AppFormatMode::Normal);
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
            (isMissing ? "needs a value behind it" : "can be given only once") + hintFor(chosen(app))};
}

std::string firstOf(const std::vector<std::string>& names, const char* dashes)
{
    return names.empty() ? "" : dashes + names.front();
}

OptionDescription described(const CLI::Option& option)
{
    const bool takesValue = option.get_items_expected_max() > 0;
    return {.name = option.nonpositional() ? firstOf(option.get_lnames(), "--") : option.get_name(true),
            .shortName = firstOf(option.get_snames(), "-"),
            .valueName = takesValue ? option.get_type_name() : "",
            .description = option.get_description(),
            .isRepeatable = option.nonpositional() && option.get_items_expected_max() > 1};
}

CommandDescription described(const CLI::App& command)
{
    CommandDescription description{.name = command.get_name(),
                                   .description = command.get_description(),
                                   .options = {},
                                   .examples = command.get_footer()};
    for (const auto* const option : command.get_options())
        description.options.push_back(described(*option));
    return description;
}

} // namespace

void ArgumentParser::Command::addOption(const char* name, std::string& value, const std::string& description,
                                        const char* valueName)
{
    app->add_option(name, value, description)->type_name(valueName);
}

void ArgumentParser::Command::addOption(const char* name, std::vector<std::string>& values,
                                        const std::string& description, const char* valueName)
{
    app->add_option(name, values, description)->type_name(valueName)->allow_extra_args(false);
}

void ArgumentParser::Command::addFlag(const char* name, bool& isSet, const char* description)
{
    app->add_flag(name, isSet, description);
}

void ArgumentParser::Command::addExamples(const char* examples)
{
    app->footer(examples);
}

ArgumentParser::ArgumentParser(const char* program, const char* version)
    : app(std::make_unique<CLI::App>(identity::nameAndDescription, program))
{
    app->set_version_flag("--version", version);
}

ArgumentParser::~ArgumentParser() = default;

ArgumentParser::Command ArgumentParser::program()
{
    return Command(*app);
}

ArgumentParser::Command ArgumentParser::addCommand(const char* name, const char* description)
{
    app->require_subcommand(0, 1);
    return Command(*app->add_subcommand(name, description));
}

ArgumentParser::Request ArgumentParser::parse(std::span<const char* const> arguments)
{
    try {
        checkAllValues(*app, arguments);
        app->parse(static_cast<int>(arguments.size()), arguments.data());
    } catch (const CLI::CallForHelp&) {
        return {.answer = app->help(), .command = {}};
    } catch (const CLI::CallForVersion& version) {
        return {.answer = version.what() + std::string("\n"), .command = {}};
    } catch (const CLI::ExtrasError&) {
        throw unexpectedArgument(*app);
    } catch (const CLI::ArgumentMismatch& mismatch) {
        throw wrongNumberOfValues(mismatch.what(), *app);
    } catch (const CLI::ParseError& error) {
        throw UsageError(chosen(*app).get_name(), error.what() + helpHint());
    }
    const auto commands = app->get_subcommands();
    return {.answer = std::nullopt, .command = commands.empty() ? "" : commands.front()->get_name()};
}

std::string ArgumentParser::helpFor(const std::string& command) const
{
    if (command.empty())
        return helpOf(*app);
    std::vector<std::string> known;
    for (const auto* const there : app->get_subcommands([](const CLI::App*) { return true; })) {
        if (there->get_name() == command)
            return helpOf(*there);
        known.push_back(there->get_name());
    }
    throw UsageError("help",
                     "there is no command \"" + command + '"' + suggestion(command, known) + hintFor(*app));
}

ProgramDescription ArgumentParser::description() const
{
    ProgramDescription all{.program = described(*app), .commands = {}};
    for (const auto* const command : app->get_subcommands([](const CLI::App*) { return true; }))
        all.commands.push_back(described(*command));
    return all;
}

std::string ArgumentParser::helpHint() const
{
    return hintFor(chosen(*app));
}

} // namespace velotrine
