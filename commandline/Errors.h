#pragma once

#include <stdexcept>
#include <string>

namespace velotrine {

/// Something typed was wrong. One line: the argument, what is wrong with it, what would be right. Exit
/// code 2.
struct UsageError : std::runtime_error
{
    UsageError(const std::string& argument, const std::string& problem)
        : runtime_error(argument + ": " + problem)
    {}
};

/// The arguments were right but the work failed: a full disk, a folder without write permission. Exit code 1.
struct WorkError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

} // namespace velotrine
