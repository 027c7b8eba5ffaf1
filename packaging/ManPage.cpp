#include "packaging/ManPage.h"

#include "audiounit/Identity.h"
#include "packaging/Suggestions.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace velotrine {

namespace {

constexpr std::size_t lineLength = 78; ///< as whoever reads the source has it

/// Text as roff prints it: a hyphen that can be typed, and no line that begins with a control character.
std::string escaped(const std::string& text)
{
    const auto plain = replaced(replaced(text, "\\", "\\e"), "-", "\\-");
    return plain.starts_with('.') || plain.starts_with('\'') ? "\\&" + plain : plain;
}

/// A paragraph; each sentence begins a line, from which roff knows where it ends.
std::string prose(const std::string& text)
{
    std::string lines;
    std::string line;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (!line.empty() && (line.ends_with('.') || line.size() + word.size() >= lineLength)) {
            lines += escaped(line) + "\n";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    return lines + escaped(line) + "\n";
}

std::string bold(const std::string& text)
{
    return "\\fB" + escaped(text) + "\\fR";
}

std::string italic(const std::string& text)
{
    return "\\fI" + escaped(text) + "\\fR";
}

std::string verbatim(const std::string& lines)
{
    std::string text = ".EX\n";
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);)
        text += escaped(line) + "\n";
    return text + ".EE\n";
}

std::string option(const OptionDescription& option)
{
    std::string names;
    if (!option.isKnownByItsPlace())
        names = (option.shortName.empty() ? "" : bold(option.shortName) + ", ") + bold(option.name);
    if (!option.valueName.empty())
        names += (names.empty() ? "" : " ") + italic(option.valueName);
    return ".TP\n" + names + "\n" + prose(option.description);
}

/// What can stand behind a name: its options, then what is known by its place.
std::string synopsis(const std::string& name, const CommandDescription& command)
{
    auto text = bold(name) + " [" + italic("OPTION") + "]...";
    for (const auto& each : command.options)
        if (each.isKnownByItsPlace())
            text += " [" + italic(each.valueName) + "]";
    return text + "\n";
}

std::string options(const CommandDescription& command)
{
    std::string text;
    for (const auto& each : command.options)
        text += option(each);
    return text;
}

std::string inCapitals(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

/// Without their heading, for which a page has one of its own.
std::string examplesOf(const CommandDescription& command)
{
    return verbatim(command.examples.substr(command.examples.find('\n') + 1));
}

} // namespace

std::string manPage(const ProgramDescription& program, const ManPageFrame& frame)
{
    const auto& name = program.program.name;
    auto text = ".\\\" Made from what the program's help says.\n.TH " + inCapitals(escaped(name)) + " 1 " +
                frame.date + " \"" + identity::nameAndVersion + "\" \"User Commands\"\n";
    text += ".SH NAME\n" + escaped(name) + " \\- " + escaped(frame.summary) + "\n.SH SYNOPSIS\n";
    for (const auto& command : program.commands)
        text += synopsis(name + " " + command.name, command) + ".br\n";
    text += synopsis(name, program.program);
    text += ".SH DESCRIPTION\n" + prose(frame.introduction);
    text += ".SH OPTIONS\n" + options(program.program);
    if (!program.commands.empty())
        text += ".SH COMMANDS\n";
    for (const auto& command : program.commands)
        text += ".SS " + escaped(name + " " + command.name) + "\n" + escaped(command.description) + ".\n" +
                options(command) + ".PP\nExamples:\n.PP\n" + examplesOf(command);
    for (const auto& table : frame.tables)
        text += ".SH " + table.heading + "\n" + verbatim(table.lines);
    text += ".SH EXAMPLES\n" + examplesOf(program.program) + ".SH SEE ALSO\n";
    for (const auto& other : frame.seeAlso)
        text += ".BR " + escaped(other) + " (1)\n";
    return text;
}

} // namespace velotrine
