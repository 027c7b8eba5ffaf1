#include "packaging/Completions.h"
#include "packaging/Suggestions.h"

#include <string>

namespace velotrine {

namespace {

constexpr const char* wordsFunction = R"(
# Offers those of the words that begin with what was typed, in capitals or not. As with names of files, the shell puts
# quotes where they are needed.
@FUNCTION@_words() {
    local word typed=${cur#[\"\']}
    typed=${typed//\\/}
    compopt -o filenames
    for word; do
        [[ ${word,,} != "${typed,,}"* ]] || COMPREPLY+=("$word")
    done
}
)";

constexpr const char* settingsFunction = R"(
# Offers identifiers, and behind "=" the values that have names.
@FUNCTION@_settings() {
    if [[ $cur != *=* ]]; then
        mapfile -t COMPREPLY < <(compgen -S = -W '@IDENTIFIERS@' -- "$cur")
        compopt -o nospace
        return
    fi
    local identifier=${cur%%=*}
    cur=${cur#*=}
    case $identifier in
@VALUES@    esac
}
)";

constexpr const char* function = R"(
@FUNCTION@() {
    local cur prev words cword split
    _init_completion -s || return
    local command=@COMMAND@

    # What follows an option.
    case "$command $prev" in
@OFFERS@    esac
    ! $split || return

    if [[ $cur == -* ]]; then
        case $command in
@NAMES@        esac
        return
    fi

    # What has no option before it.
    case $command in
@PLACES@    esac
} &&
    complete -F @FUNCTION@ @PROGRAM@
)";

/// A program's name may hold what a function's should not.
std::string functionName(const ProgramDescription& program)
{
    return "_" + replaced(program.program.name, "-", "_");
}

std::string filled(const char* text, const ProgramDescription& program)
{
    return replaced(replaced(text, "@FUNCTION@", functionName(program)), "@PROGRAM@", program.program.name);
}

std::string branch(const std::string& pattern, const std::string& commands)
{
    return "        " + pattern + ") " + commands + " ;;\n";
}

std::string values(const ProgramDescription& program)
{
    std::string lines;
    for (const auto& setting : settings())
        if (!setting.valueNames.empty())
            lines += branch(setting.identifier,
                            functionName(program) + "_words " + listed(setting.valueNames, inShellQuotes));
    return lines;
}

/// The command that offers them; empty where there are none.
std::string offer(const Suggestions& suggestions, const ProgramDescription& program)
{
    if (suggestions.settings)
        return functionName(program) + "_settings";
    if (!suggestions.words.empty())
        return functionName(program) + "_words " + listed(suggestions.words, inShellQuotes);
    if (suggestions.fileEndings.empty())
        return {};
    std::string pattern;
    for (const auto& ending : suggestions.fileEndings)
        pattern += (pattern.empty() ? "" : "|") + ending;
    return "_filedir '@(" + pattern + ")'";
}

/// What is different between commands; the program itself has an empty name.
struct Cases
{
    std::string offers;       ///< behind options whose values are known
    std::string withoutOffer; ///< the others that take a value, as one pattern
    std::string names;
    std::string places;
};

void addCases(const std::string& name, const CommandDescription& command, const ProgramDescription& program,
              Cases& cases)
{
    std::vector<std::string> names;
    for (const auto& option : command.options) {
        const auto offered = offer(suggestionsFor(option, program), program);
        if (option.isKnownByItsPlace()) {
            cases.places += branch(inShellQuotes(name), offered);
            continue;
        }
        names.push_back(option.name);
        if (!option.shortName.empty())
            names.push_back(option.shortName);
        const auto pattern = inShellQuotes(name + " " + option.name);
        if (!offered.empty())
            cases.offers += branch(pattern, offered + "; return");
        else if (!option.valueName.empty())
            cases.withoutOffer += (cases.withoutOffer.empty() ? "" : " | ") + pattern;
    }
    cases.names += "            '" + name + "') mapfile -t COMPREPLY < <(compgen -W '" +
                   listed(names, [](const auto& each) { return each; }) + "' -- \"$cur\") ;;\n";
}

} // namespace

std::string bashCompletion(const ProgramDescription& program)
{
    Cases cases;
    addCases("", program.program, program, cases);
    std::vector<std::string> commands;
    for (const auto& command : program.commands) {
        addCases(command.name, command, program, cases);
        commands.push_back(command.name);
    }
    const bool hasCommands = !commands.empty();
    if (hasCommands)
        cases.places += branch("''", functionName(program) + "_words " + listed(commands, inShellQuotes));

    auto text = "# Completion of " + program.program.name +
                " for bash, made from what its help says. -*- mode: sh -*-\n# shellcheck shell=bash\n";
    if (hasCommands)
        text += filled(wordsFunction, program);
    if (takesSettings(program)) {
        std::vector<std::string> identifiers;
        for (const auto& setting : settings())
            identifiers.push_back(setting.identifier);
        const auto plain = [](const std::string& each) { return each; };
        text +=
            replaced(replaced(filled(settingsFunction, program), "@IDENTIFIERS@", listed(identifiers, plain)),
                     "@VALUES@", values(program));
    }
    auto main = replaced(filled(function, program), "@COMMAND@", "");
    if (hasCommands)
        main = replaced(main, "    local command=\n",
                        "    local command=\n    ((cword == 1)) || command=${words[1]}\n");
    main = replaced(main, "@OFFERS@", cases.offers + branch(cases.withoutOffer, "return"));
    main = replaced(main, "@NAMES@", cases.names);
    return text + replaced(main, "@PLACES@", cases.places);
}

} // namespace velotrine
