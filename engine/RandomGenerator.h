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

} // namespace velotrine
