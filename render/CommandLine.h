#pragma once

#include "commandline/ProgramDescription.h"

namespace velotrine {

/// The program "velotrine". Returns its exit code: 0 done, 1 the work failed, 2 something typed was wrong,
/// 128 and the signal's number when interrupted.
[[nodiscard]] int runCommandLine(int argumentCount, const char* const* arguments);

/// What its help says.
[[nodiscard]] ProgramDescription commandLineDescription();

} // namespace velotrine
