#pragma once

#include <span>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace velotrine {

/// Has the parser read a program's arguments, program name first, and says in the project's own words what is
/// wrong with them: throws UsageError for the first that will not do. Refuses also what the parser would
/// accept in silence or blame on another argument: a missing value, for which it takes the next option; an
/// empty one, which means nothing; and a flag with a value. The parser's own CallForHelp and CallForVersion
/// pass through.
/// @param app  named like the program
void parseArguments(CLI::App& app, std::span<const char* const> arguments);

/// Where to read what a command knows, in parentheses and with a space before it; for the end of a message.
[[nodiscard]] std::string helpHint(const CLI::App& app);

[[nodiscard]] std::string inQuotes(std::string_view text);

/// What an option's number may be, and how to say it.
struct NumberRule
{
    const char* option;
    double min;
    double max;
    bool wholeOnly;
    const char* expected; ///< what to give instead
};

/// Throws UsageError for a text that is not such a number.
[[nodiscard]] double numberArgument(const NumberRule& rule, const std::string& text);

/// A whole number of frames from 1 to 8192, or UsageError.
[[nodiscard]] int framesArgument(const char* option, const std::string& text);

/// A whole number of Hz from 8000 to 768000, or UsageError.
[[nodiscard]] int sampleRateArgument(const char* option, const std::string& text);

/// A message can quote what was typed, or what is in a file: whatever that is, it stays one line of bearable
/// length, and does nothing to the terminal.
[[nodiscard]] std::string asOneLine(std::string message);

} // namespace velotrine
