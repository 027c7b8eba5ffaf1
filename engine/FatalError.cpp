#include "engine/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace velotrine {

void fatalError(const char* condition) noexcept
{
    std::fprintf(stderr, "velotrine: fatal: %s\n", condition);
    std::abort();
}

} // namespace velotrine
