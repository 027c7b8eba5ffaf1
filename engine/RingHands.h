#pragma once

#include "engine/ClockPhases.h"
#include "engine/Nonblocking.h"

#include <array>

namespace velotrine {

/// Where the hand stands on each ring and for how long nothing can happen there, for all rings at once. Good
/// while the motion is steady: every phase in [0, 1], offset and wobble together below 2 turns.
struct RingHands
{
    using PerPlace = std::array<double, ClockPhases::places>;

    /// Nearer than this, in turns, to where something happens, roundings may decide in which frame it does.
    /// The roundings of a position below 6 turns, and the difference of two sines that are good to 1e-15
    /// each, together stay below 1e-14; the phases' own roundings over the longest wait for a spot below
    /// 2e-10.
    static constexpr double decisionMargin = 1.0e-9;

    /// Whole turns added to a hand's position before the fraction is taken, so that the sum stays positive.
    static constexpr double spareTurns = 3.0;

    // How rings and hand move

    alignas(64) PerPlace wobbleDepths{};  ///< turns; negative on rings that turn the other way
    alignas(64) PerPlace phaseOffsets{};  ///< turns
    alignas(64) PerPlace spotCounts{};    ///< without spots, only the wobble means something
    alignas(64) PerPlace spotSpacings{};  ///< turns
    double leastFramesPerTurnAhead = 0.0; ///< no ring's hand makes a turn in fewer
    double leastFramesPerTurnBack = 0.0;  ///< nor one the other way round in fewer than these

    // What find() finds

    alignas(64) PerPlace wobbles{};   ///< turns
    alignas(64) PerPlace positions{}; ///< turns
    /// Turns to the nearest spot or to the half turn, at which a ring notices having passed its start
    alignas(64) PerPlace distances{};
    /// Frames before the hand can come to one of these, unless it is within the margin now; not a whole
    /// number
    alignas(64) PerPlace quietFrames{};

    void find(const ClockPhases& phases) noexcept VELOTRINE_NONBLOCKING;
};

} // namespace velotrine
