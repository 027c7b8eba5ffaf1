#pragma once

#include "commandline/ProgramDescription.h"

#include <string>
#include <vector>

namespace velotrine {

/// What a shell can offer in the place of a value.
struct Suggestions
{
    std::vector<std::string> words;
    std::vector<std::string> fileEndings; ///< "json": files with one of these, and folders on the way to them
    bool settings = false;                ///< IDENTIFIER=VALUE

    [[nodiscard]] bool areEmpty() const { return words.empty() && fileEndings.empty() && !settings; }
};

/// By the name that help gives to a value, in which "|" stands between what can be typed: "auto|none|SECONDS"
/// has two words, "FILE.wav|FILE.flac|-" two kinds of files. "NAME|NUMBER" is a preset, "COMMAND" one of the
/// program's. What only a person can know is not offered.
[[nodiscard]] Suggestions suggestionsFor(const OptionDescription& option, const ProgramDescription& program);

/// A parameter's identifier and, where its values have names, these.
struct Setting
{
    std::string identifier;
    std::vector<std::string> valueNames;
};

/// All parameters, in the order of their addresses.
[[nodiscard]] std::vector<Setting> settings();

/// Whether any command or the program itself takes a setting.
[[nodiscard]] bool takesSettings(const ProgramDescription& program);

/// Each text as `quote` writes it, with spaces between.
template <typename Quote>
[[nodiscard]] std::string listed(const std::vector<std::string>& texts, const Quote& quote)
{
    std::string list;
    for (const auto& text : texts)
        list += (list.empty() ? "" : " ") + quote(text);
    return list;
}

/// With every `from` in it replaced.
[[nodiscard]] std::string replaced(std::string text, const std::string& from, const std::string& to);

/// As bash and zsh read it back, whatever it holds.
[[nodiscard]] std::string inShellQuotes(const std::string& text);

} // namespace velotrine
