#include "packaging/Suggestions.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"

#include <algorithm>
#include <sstream>

namespace velotrine {

namespace {

std::vector<std::string> alternatives(const std::string& valueName)
{
    std::vector<std::string> found;
    std::istringstream text(valueName);
    for (std::string part; std::getline(text, part, '|');)
        found.push_back(part);
    return found;
}

/// A word to type as it is, which the names of what is to be given instead are not.
bool isWord(const std::string& text)
{
    return std::ranges::all_of(text, [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); });
}

bool takeSettings(const CommandDescription& command, const ProgramDescription& program)
{
    return std::ranges::any_of(command.options, [&program](const OptionDescription& option) {
        return suggestionsFor(option, program).settings;
    });
}

} // namespace

Suggestions suggestionsFor(const OptionDescription& option, const ProgramDescription& program)
{
    Suggestions suggestions;
    suggestions.settings = option.valueName == "IDENTIFIER=VALUE";
    if (option.valueName == "NAME|NUMBER")
        suggestions.words = presetNames();
    if (option.valueName == "COMMAND")
        for (const auto& command : program.commands)
            suggestions.words.push_back(command.name);

    const std::string file = "FILE.";
    for (const auto& alternative : alternatives(option.valueName)) {
        if (alternative.starts_with(file))
            suggestions.fileEndings.push_back(alternative.substr(file.size()));
        else if (isWord(alternative))
            suggestions.words.push_back(alternative);
    }
    return suggestions;
}

std::vector<Setting> settings()
{
    std::vector<Setting> all;
    for (const auto& parameter : parameterTable()) {
        const auto names = valueNames(parameter.kind);
        all.push_back({parameter.identifier, {names.begin(), names.end()}});
    }
    return all;
}

bool takesSettings(const ProgramDescription& program)
{
    return takeSettings(program.program, program) ||
           std::ranges::any_of(program.commands, [&program](const CommandDescription& command) {
               return takeSettings(command, program);
           });
}

std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::string inShellQuotes(const std::string& text)
{
    return "'" + replaced(text, "'", R"('\'')") + "'";
}

} // namespace velotrine
