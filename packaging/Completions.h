#pragma once

#include "commandline/ProgramDescription.h"

#include <string>

namespace velotrine {

/// What the completion of bash-completion (Debian's package of that name) sources at a first Tab behind the
/// program's name.
[[nodiscard]] std::string bashCompletion(const ProgramDescription& program);

/// What zsh finds in its function path as "_PROGRAM".
[[nodiscard]] std::string zshCompletion(const ProgramDescription& program);

/// What fish reads as "PROGRAM.fish".
[[nodiscard]] std::string fishCompletion(const ProgramDescription& program);

} // namespace velotrine
