#pragma once

#include <string>
#include <vector>

namespace velotrine {

/// What help says of an option.
struct OptionDescription
{
    std::string name;      ///< "--preset"; without dashes for one that is known by its place
    std::string shortName; ///< "-h"; empty for most
    std::string valueName; ///< what help calls its value; empty for a flag
    std::string description;
    bool isRepeatable = false;

    [[nodiscard]] bool isKnownByItsPlace() const { return !name.starts_with('-'); }
};

/// What help says of a command, or of a program without one.
struct CommandDescription
{
    std::string name;
    std::string description;
    std::vector<OptionDescription> options;
    std::string examples; ///< lines, with a heading
};

/// All that help says, for whoever writes it in another form.
struct ProgramDescription
{
    CommandDescription program;
    std::vector<CommandDescription> commands; ///< empty where the program itself does the work
};

} // namespace velotrine
