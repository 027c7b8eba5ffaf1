#pragma once

namespace velotrine {

// The rates, in Hz, at which the instrument is played; whoever gets a rate from outside refuses others.
inline constexpr double lowestSampleRate = 8000.0;
inline constexpr double highestSampleRate = 768000.0;

/// Also false for what is no number.
[[nodiscard]] constexpr bool isPlayable(double sampleRate) noexcept
{
    return sampleRate >= lowestSampleRate && sampleRate <= highestSampleRate;
}

} // namespace velotrine
