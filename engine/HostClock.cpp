#include "engine/HostClock.h"

#include <chrono>

namespace velotrine {

std::uint64_t hostClockNow() noexcept
{
    const auto sinceEpoch = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count());
}

} // namespace velotrine
