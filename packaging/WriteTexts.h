#pragma once

#include "packaging/ManPage.h"

namespace velotrine {

/// The main function of a program of the build: FOLDER DATE. Into the folder it writes a program's manual
/// page and its completions, under the names of the program; the date is the page's.
[[nodiscard]] int writeTexts(int argumentCount, const char* const* arguments,
                             const ProgramDescription& program, ManPageFrame frame);

} // namespace velotrine
