#include "engine/RingHands.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "engine/RingHands.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "engine/SineOfHalfTurns-inl.h"

HWY_BEFORE_NAMESPACE();

namespace velotrine {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// The hand stands at p, in turns, on a ring of n spots:
/// - the spot behind it is p - floor(p n) / n away, the one ahead 1 / n minus that;
/// - the half turn counts as a spot, ahead while p < 0.5, behind after it;
/// - each distance times the fewest frames that a turn takes in its direction is how long the hand needs at
///   least to get there. The wobble can turn the hand round at any moment, so the smaller of the two is how
///   long all stays quiet.
void Find(RingHands& hands, const ClockPhases& phases)
{
    using Doubles = hn::CappedTag<double, ClockPhases::places>;
    using Vector = hn::Vec<Doubles>;
    constexpr std::size_t lanes = hn::MaxLanes(Doubles());
    constexpr std::size_t count = ClockPhases::places / lanes;

    const Doubles d;
    const auto half = hn::Set(d, 0.5);
    const auto one = hn::Set(d, 1.0);
    const auto margin = hn::Set(d, RingHands::decisionMargin);
    const auto clock = hn::Set(d, phases.rising[ClockPhases::barClock]);
    const auto framesAhead = hn::Set(d, hands.leastFramesPerTurnAhead);
    const auto framesBack = hn::Set(d, hands.leastFramesPerTurnBack);

    Vector sines[count];
    for (std::size_t i = 0; i < count; ++i)
        sines[i] = hn::Mul(hn::Load(d, phases.rising.data() + i * lanes), hn::Set(d, 2.0));
    SinesOfHalfTurns(d, sines);

    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t place = i * lanes;
        const auto still = hn::Sub(hn::Sub(clock, hn::Load(d, hands.phaseOffsets.data() + place)),
                                   hn::Load(d, phases.turning.data() + place));
        const auto wobble = hn::Mul(hn::Load(d, hands.wobbleDepths.data() + place), sines[i]);
        const auto turns = hn::Add(hn::Sub(still, wobble), hn::Set(d, RingHands::spareTurns));
        const auto position = hn::Sub(turns, hn::Floor(turns));

        const auto spacing = hn::Load(d, hands.spotSpacings.data() + place);
        const auto spot = hn::Floor(hn::Mul(position, hn::Load(d, hands.spotCounts.data() + place)));
        const auto beyondSpot = hn::NegMulAdd(spot, spacing, position);
        const auto toHalf = hn::Sub(half, position);
        const auto isBeforeHalf = hn::Gt(toHalf, hn::Zero(d));
        const auto ahead = hn::Min(hn::Sub(spacing, beyondSpot), hn::IfThenElse(isBeforeHalf, toHalf, one));
        const auto back = hn::Min(beyondSpot, hn::IfThenElse(isBeforeHalf, one, hn::Neg(toHalf)));
        const auto quiet =
            hn::Min(hn::Mul(hn::Sub(ahead, margin), framesAhead), hn::Mul(hn::Sub(back, margin), framesBack));

        hn::Store(wobble, d, hands.wobbles.data() + place);
        hn::Store(position, d, hands.positions.data() + place);
        hn::Store(hn::Min(ahead, back), d, hands.distances.data() + place);
        hn::Store(quiet, d, hands.quietFrames.data() + place);
    }
}

} // namespace HWY_NAMESPACE
} // namespace velotrine

HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace velotrine {

HWY_EXPORT(Find);

void RingHands::find(const ClockPhases& phases) noexcept VELOTRINE_NONBLOCKING
{
    // A table of pointers, one for each instruction set, none of which waits for anything.
    VELOTRINE_UNFOLLOWED(HWY_DYNAMIC_DISPATCH(Find)(*this, phases);)
}

} // namespace velotrine

#endif
