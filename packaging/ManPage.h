#pragma once

#include "commandline/ProgramDescription.h"

#include <string>
#include <vector>

namespace velotrine {

/// What a manual page says that the program's help does not.
struct ManPageFrame
{
    /// Lines that stand as they are, in columns.
    struct Table
    {
        std::string heading; ///< in capitals, as man pages have it
        std::string lines;
    };

    std::string summary; ///< behind the name: what it is, in one line
    std::string introduction;
    std::vector<Table> tables;
    std::string date;                 ///< "2026-11-21"
    std::vector<std::string> seeAlso; ///< programs that have a page in the same section
};

/// The page of a program, for man: roff with the macros of man(7), section 1.
[[nodiscard]] std::string manPage(const ProgramDescription& program, const ManPageFrame& frame);

} // namespace velotrine
