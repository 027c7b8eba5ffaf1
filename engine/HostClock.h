#pragma once

#include "engine/Nonblocking.h"

#include <cstdint>

namespace velotrine {

/// The clock that spot fires are stamped with and that the display compares them to. One tick is one
/// nanosecond.
inline constexpr double hostClockSecondsPerTick = 1.0e-9;

/// Ticks since a fixed moment in the past; never 0, never backwards. Any thread, the render thread included:
/// it does not enter the operating system.
[[nodiscard]] std::uint64_t hostClockNow() noexcept VELOTRINE_NONBLOCKING;

} // namespace velotrine
