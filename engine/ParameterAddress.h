#pragma once

#include "engine/RingCount.h"

#include <cstdint>

namespace velotrine {

/// Bounds of the internal tempo, quarter notes a minute.
inline constexpr float minTempo = 40.0f;
inline constexpr float maxTempo = 300.0f;

/// Where a parameter lives: 0 to 8 are the global ones, then six groups of five, one for each ring.
using ParameterAddress = std::uint64_t;

enum class GlobalParameter : ParameterAddress
{
    activity,
    boredom,
    calories,
    drudgery,
    rootNote,
    scaleType,
    bpm,
    volume,
    sync,
};

enum class RingParameter : ParameterAddress
{
    spots,
    phase,
    probability,
    octave,
    volume,
    timbre,
};

inline constexpr ParameterAddress globalParameterCount = 9;
inline constexpr ParameterAddress ringParameterCount = 6;
inline constexpr ParameterAddress parameterCount = globalParameterCount + ringParameterCount * ringCount;

[[nodiscard]] constexpr ParameterAddress addressOf(GlobalParameter parameter) noexcept
{
    return static_cast<ParameterAddress>(parameter);
}

/// @param ring  0 to 4
[[nodiscard]] constexpr ParameterAddress addressOf(RingParameter parameter, int ring) noexcept
{
    return globalParameterCount + ringCount * static_cast<ParameterAddress>(parameter) +
           static_cast<ParameterAddress>(ring);
}

/// @param address  a ring's, from globalParameterCount on
[[nodiscard]] constexpr int ringOf(ParameterAddress address) noexcept
{
    return static_cast<int>((address - globalParameterCount) % ringCount);
}

} // namespace velotrine
