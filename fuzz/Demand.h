#pragma once

#include <cstdio>
#include <cstdlib>

namespace velotrine {

/// Ends the program, as the fuzzer wants it of a finding, with a word on what does not hold.
inline void demand(bool holds, const char* rule)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
}

} // namespace velotrine
