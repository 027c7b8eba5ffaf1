#pragma once

#include "engine/Nonblocking.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace velotrine {

/// The phases that move on with every frame while the clock runs, side by side, so that one instruction moves
/// several. Unused places stay 0.
struct ClockPhases
{
    static constexpr std::size_t places = 8;

    /// In [0, 1), moving up: the rings' wobble oscillators, then the bar clock.
    alignas(64) std::array<double, places> rising{};
    alignas(64) std::array<double, places> risingSteps{};

    /// In [0, 1), moving either way: the rings' rotations.
    alignas(64) std::array<double, places> turning{};
    alignas(64) std::array<double, places> turningSteps{};

    static constexpr std::size_t barClock = 5; ///< its place among the rising ones

    /// Adds the steps so many times. After each, one turn is taken off a phase that has reached 1, and one is
    /// added to a rotation below 0: phases far outside the turn come back by one turn a frame. The sums are
    /// those of one addition after the other, to the last bit: where a crossing falls exactly on a frame, that
    /// bit decides which frame it is.
    void advance(int frames) noexcept VELOTRINE_NONBLOCKING;

    /// Whether all phases are in [0, 1]; restored ones need not be.
    [[nodiscard]] bool areWithinTurn() const noexcept VELOTRINE_NONBLOCKING
    {
        const auto within = [](double phase) { return phase >= 0.0 && phase <= 1.0; };
        return std::ranges::all_of(rising, within) && std::ranges::all_of(turning, within);
    }
};

} // namespace velotrine
