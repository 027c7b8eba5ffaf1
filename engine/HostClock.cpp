#include "engine/HostClock.h"

#include <chrono>

namespace velotrine {

std::uint64_t hostClockNow() noexcept VELOTRINE_NONBLOCKING
{
    // The C library reads it from a page that the kernel shares.
    VELOTRINE_UNFOLLOWED(const auto now = std::chrono::steady_clock::now();)
    const auto sinceEpoch = now.time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count());
}

} // namespace velotrine
