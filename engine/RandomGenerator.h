#pragma once

#include <cstdint>

namespace velotrine {

/// One step of the 64-bit xorshift generator with shifts 13, 7, 17 (G. Marsaglia, "Xorshift RNGs", Journal of
/// Statistical Software 8(14), 2003). A state of 0 stays 0, so it must never be the seed.
[[nodiscard]] constexpr std::uint64_t xorshift(std::uint64_t state) noexcept
{
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
}

/// Steps the generator and returns a number in [0, 1], both ends included, from its low 24 bits: as many as a
/// float holds exactly.
[[nodiscard]] constexpr float drawUnit(std::uint64_t& state) noexcept
{
    constexpr std::uint64_t low24Bits = 0xFFFFFF;
    state = xorshift(state);
    return static_cast<float>(state & low24Bits) / static_cast<float>(low24Bits);
}

/// The seed of whoever chooses none.
inline constexpr std::uint32_t defaultSeed = 12345;

/// The state that a generator begins in for a seed; never 0. The default seed is its own state. Any other is
/// spread over 64 bits, since neighbouring small states would begin alike: by the step and the mix of
/// SplitMix64 (G. L. Steele Jr., D. Lea, C. H. Flood, "Fast Splittable Pseudorandom Number Generators",
/// OOPSLA 2014), which gives 0 for one state only, and that is beyond 32 bits.
[[nodiscard]] constexpr std::uint64_t generatorState(std::uint32_t seed) noexcept
{
    if (seed == defaultSeed)
        return defaultSeed;
    constexpr std::uint64_t goldenGamma = 0x9E3779B97F4A7C15;
    std::uint64_t state = seed + goldenGamma;
    state = (state ^ (state >> 30)) * 0xBF58476D1CE4E5B9;
    state = (state ^ (state >> 27)) * 0x94D049BB133111EB;
    return state ^ (state >> 31);
}

} // namespace velotrine
