#include "packaging/Completions.h"
#include "packaging/Suggestions.h"

#include <string>

namespace velotrine {

namespace {

/// For a place of `_arguments` where ":" and brackets would end it.
std::string escaped(std::string text)
{
    for (const auto* const special : {"\\", ":", "[", "]"})
        text = replaced(text, special, std::string("\\") + special);
    return text;
}

/// A word in a list in parentheses, which the shell reads once more.
std::string inList(std::string text)
{
    for (const auto* const special : {"\\", " ", "#", "|", "(", ")", "\"", "'", ":"})
        text = replaced(text, special, std::string("\\") + special);
    return text;
}

std::string functionName(const ProgramDescription& program)
{
    return "_" + program.program.name;
}

/// What `_arguments` does in the place of a value.
std::string action(const Suggestions& suggestions, const ProgramDescription& program)
{
    if (suggestions.settings)
        return functionName(program) + "_settings";
    if (!suggestions.words.empty())
        return "(" + listed(suggestions.words, inList) + ")";
    if (suggestions.fileEndings.empty())
        return " ";
    std::string pattern;
    for (const auto& ending : suggestions.fileEndings)
        pattern += (pattern.empty() ? "" : "|") + ending;
    // In parentheses, an ending alone would be a condition.
    const bool isAlone = suggestions.fileEndings.size() == 1;
    return "_files -g \"*." + (isAlone ? pattern : "(" + pattern + ")") + "\"";
}

/// What `_arguments` is to know of an option.
std::string argument(const OptionDescription& option, const ProgramDescription& program)
{
    const auto value =
        ":" + escaped(option.valueName) + ":" + action(suggestionsFor(option, program), program);
    if (option.isKnownByItsPlace())
        return inShellQuotes(value);
    const auto explained = "[" + escaped(option.description) + "]";
    if (!option.valueName.empty())
        return inShellQuotes((option.isRepeatable ? "*" : "") + option.name + "=" + explained + value);
    if (option.shortName.empty())
        return inShellQuotes(option.name + explained);
    // Either name stands for both.
    return "'(" + option.shortName + " " + option.name + ")'{" + option.shortName + "," + option.name + "}" +
           inShellQuotes(explained);
}

std::string arguments(const CommandDescription& command, const ProgramDescription& program,
                      const std::string& indent)
{
    std::string text = indent + "_arguments";
    for (const auto& option : command.options)
        text += " \\\n" + indent + "    " + argument(option, program);
    return text;
}

std::string commandList(const ProgramDescription& program)
{
    std::string list;
    for (const auto& command : program.commands)
        list += (list.empty() ? "" : " ") + command.name + "\\:" + inList(command.description);
    return inShellQuotes(":COMMAND:((" + list + "))");
}

std::string settingsFunction(const ProgramDescription& program)
{
    std::string values;
    std::vector<std::string> identifiers;
    for (const auto& setting : settings()) {
        identifiers.push_back(setting.identifier + "=");
        if (!setting.valueNames.empty())
            values += "            (*" + setting.identifier + "=) compadd -- " +
                      listed(setting.valueNames, inShellQuotes) + " ;;\n";
    }
    return "# Identifiers, and behind \"=\" the values that have names.\n" + functionName(program) +
           "_settings() {\n    if compset -P '*='; then\n        case $IPREFIX in\n" + values +
           "        esac\n    else\n        compadd -S '' -- " +
           listed(identifiers, [](const auto& each) { return each; }) + "\n    fi\n}\n\n";
}

} // namespace

std::string zshCompletion(const ProgramDescription& program)
{
    const auto& name = program.program.name;
    auto text = "#compdef " + name + "\n# Made from what the program's help says.\n\n";
    if (takesSettings(program))
        text += settingsFunction(program);
    text += functionName(program) + "() {\n";
    if (!program.commands.empty()) {
        text += "    if ((CURRENT > 2)); then\n        shift words\n        ((CURRENT--))\n        case "
                "$words[1] in\n";
        for (const auto& command : program.commands)
            text += "            (" + command.name + ")\n" + arguments(command, program, "                ") +
                    "\n                ;;\n";
        text += "        esac\n        return\n    fi\n";
    }
    text += arguments(program.program, program, "    ");
    if (!program.commands.empty())
        text += " \\\n        " + commandList(program);
    return text + "\n}\n\n" + functionName(program) + " \"$@\"\n";
}

} // namespace velotrine
