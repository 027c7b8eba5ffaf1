#pragma once

#include "commandline/ProgramDescription.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace velotrine {

/// Reads a program's command line, and says in the project's own words what is wrong with it. The parser that
/// does the work stays out of sight: its header takes a compiler ten seconds.
class ArgumentParser
{
public:
    /// What can be typed behind the program's name, or behind a command's. Where the values go must outlive
    /// the parser; they stay as they are where nothing is typed.
    class Command
    {
    public:
        explicit Command(CLI::App& command) : app(&command) {}

        /// @param valueName  what help calls the value
        void addOption(const char* name, std::string& value, const std::string& description,
                       const char* valueName);

        /// One that may be repeated.
        void addOption(const char* name, std::vector<std::string>& values, const std::string& description,
                       const char* valueName);
        void addFlag(const char* name, bool& isSet, const char* description);
        void addExamples(const char* examples); ///< for the end of the help

    private:
        CLI::App* app;
    };

    /// What was typed.
    struct Request
    {
        std::optional<std::string> answer; ///< help or version: what to print instead of doing anything
        std::string command;               ///< the one chosen; empty for none
    };

    ArgumentParser(const char* program, const char* version);
    ~ArgumentParser();
    ArgumentParser(const ArgumentParser&) = delete;
    ArgumentParser& operator=(const ArgumentParser&) = delete;

    [[nodiscard]] Command program();
    [[nodiscard]] Command addCommand(const char* name, const char* description);

    /// Reads the arguments, program name first. Throws UsageError for the first that will not do. Refuses
    /// also what the parser would accept in silence or blame on another argument: a missing value, for which
    /// it takes the next option; an empty one, which means nothing; and a flag with a value.
    [[nodiscard]] Request parse(std::span<const char* const> arguments);

    /// What --help behind a command says, or that of the program for an empty name. Throws UsageError for a
    /// command that there is not.
    [[nodiscard]] std::string helpFor(const std::string& command) const;

    /// What all of help says, as plain data.
    [[nodiscard]] ProgramDescription description() const;

    /// Where to read what a command knows, in parentheses and with a space before it; for the end of a
    /// message.
    [[nodiscard]] std::string helpHint() const;

private:
    std::unique_ptr<CLI::App> app;
};

} // namespace velotrine
