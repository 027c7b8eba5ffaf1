#include "packaging/Completions.h"
#include "packaging/Suggestions.h"

#include <string>

namespace velotrine {

namespace {

std::string inFishQuotes(const std::string& text)
{
    return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

/// A word in a list, which fish reads once more.
std::string inList(const std::string& text)
{
    return "\"" + text + "\"";
}

std::vector<std::string> settingWords()
{
    std::vector<std::string> words;
    for (const auto& setting : settings()) {
        if (setting.valueNames.empty())
            words.push_back(setting.identifier + "=");
        for (const auto& value : setting.valueNames)
            words.push_back(setting.identifier + "=" + value);
    }
    return words;
}

/// What to offer in the place of a value, and that nothing else is.
std::string offer(const Suggestions& suggestions)
{
    const auto words = suggestions.settings ? settingWords() : suggestions.words;
    if (!words.empty())
        return " -x -a " + inFishQuotes(listed(words, inList));
    if (suggestions.fileEndings.empty())
        return " -x";
    // Files with the wanted endings come first; fish shows the others behind.
    const auto files = [](const std::string& ending) { return "(__fish_complete_suffix ." + ending + ")"; };
    return " -k -x -a " + inFishQuotes(listed(suggestions.fileEndings, files));
}

/// @param rest  with a space before it
std::string beginning(const ProgramDescription& program, const std::string& rest)
{
    return "complete -c " + program.program.name + rest;
}

/// @param when  the condition under which a line counts, with a space before it
std::string lines(const CommandDescription& command, const ProgramDescription& program,
                  const std::string& when)
{
    std::string text;
    for (const auto& option : command.options) {
        text += beginning(program, when);
        if (!option.shortName.empty())
            text += " -s " + option.shortName.substr(1);
        if (!option.isKnownByItsPlace())
            text += " -l " + option.name.substr(2);
        if (!option.valueName.empty())
            text += offer(suggestionsFor(option, program));
        text += " -d " + inFishQuotes(option.description) + "\n";
    }
    return text;
}

} // namespace

std::string fishCompletion(const ProgramDescription& program)
{
    const auto& name = program.program.name;
    auto text = "# Completion of " + name + " for fish, made from what its help says.\n\n";
    if (program.commands.empty())
        return text + lines(program.program, program, "");

    const std::string first = " -n __fish_use_subcommand";
    text += beginning(program, " -f\n") + lines(program.program, program, first);
    for (const auto& command : program.commands) {
        text += beginning(program, first) + " -a " + command.name;
        text += " -d " + inFishQuotes(command.description) + "\n";
    }
    for (const auto& command : program.commands)
        text += "\n" +
                lines(command, program, " -n " + inFishQuotes("__fish_seen_subcommand_from " + command.name));
    return text;
}

} // namespace velotrine
