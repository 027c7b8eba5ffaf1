#include "engine/FatalError.h"

#include "engine/Nonblocking.h"

#include <cstdio>
#include <cstdlib>

namespace velotrine {

void fatalError(const char* condition) noexcept
{
    VELOTRINE_MAY_BLOCK();
    std::fprintf(stderr, "velotrine: fatal: %s\n", condition);
    std::abort();
}

} // namespace velotrine
