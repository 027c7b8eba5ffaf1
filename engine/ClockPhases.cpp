#include "engine/ClockPhases.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "engine/ClockPhases.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();

namespace velotrine {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::CappedTag<double, ClockPhases::places>;
using Vector = hn::Vec<Doubles>;

/// Frames per run; a run in which no phase can reach an end of the turn is added up without looking for it.
constexpr int framesPerRun = 64;

HWY_INLINE Vector TakeTurnOff(Vector phase)
{
    const Doubles d;
    const auto one = hn::Set(d, 1.0);
    return hn::Sub(phase, hn::IfThenElseZero(hn::Ge(phase, one), one));
}

HWY_INLINE Vector WrapBothWays(Vector phase)
{
    const Doubles d;
    const auto one = hn::Set(d, 1.0);
    const auto missingTurn = hn::IfThenElseZero(hn::Lt(phase, hn::Zero(d)), one);
    return hn::Add(TakeTurnOff(phase), missingTurn);
}

/// All phases in registers; the vectors' sums run beside each other.
struct PhaseVectors
{
    static constexpr std::size_t lanes = hn::MaxLanes(Doubles());
    static constexpr std::size_t count = ClockPhases::places / lanes;

    Vector rising[count];
    Vector risingSteps[count];
    Vector turning[count];
    Vector turningSteps[count];

    HWY_INLINE void Load(const ClockPhases& phases)
    {
        const Doubles d;
        for (std::size_t i = 0; i < count; ++i) {
            rising[i] = hn::Load(d, phases.rising.data() + i * lanes);
            risingSteps[i] = hn::Load(d, phases.risingSteps.data() + i * lanes);
            turning[i] = hn::Load(d, phases.turning.data() + i * lanes);
            turningSteps[i] = hn::Load(d, phases.turningSteps.data() + i * lanes);
        }
    }

    HWY_INLINE void Store(ClockPhases& phases) const
    {
        const Doubles d;
        for (std::size_t i = 0; i < count; ++i) {
            hn::Store(rising[i], d, phases.rising.data() + i * lanes);
            hn::Store(turning[i], d, phases.turning.data() + i * lanes);
        }
    }

    /// Whether all phases are in [0, 1) and stay there for `frames` steps.
    HWY_INLINE bool StayWithinTurn(int frames) const
    {
        // Far more than the rounding of a run of additions.
        constexpr double margin = 1.0e-9;
        const Doubles d;
        const auto frameCount = hn::Set(d, static_cast<double>(frames));
        bool stay = true;
        for (std::size_t i = 0; i < count; ++i) {
            const auto risen = hn::MulAdd(risingSteps[i], frameCount, rising[i]);
            const auto turned = hn::MulAdd(turningSteps[i], frameCount, turning[i]);
            const auto highest = hn::Max(hn::Max(rising[i], risen), hn::Max(turning[i], turned));
            const auto belowOne = hn::Lt(highest, hn::Set(d, 1.0 - margin));
            const auto startsAboveZero = hn::Ge(turning[i], hn::Zero(d));
            const auto endsAboveZero =
                hn::Or(hn::Ge(turned, hn::Set(d, margin)), hn::Ge(turningSteps[i], hn::Zero(d)));
            stay = stay && hn::AllTrue(d, hn::And(belowOne, hn::And(startsAboveZero, endsAboveZero)));
        }
        return stay;
    }

    HWY_INLINE void Step()
    {
        for (std::size_t i = 0; i < count; ++i) {
            rising[i] = hn::Add(rising[i], risingSteps[i]);
            turning[i] = hn::Add(turning[i], turningSteps[i]);
        }
    }

    HWY_INLINE void Wrap()
    {
        for (std::size_t i = 0; i < count; ++i) {
            rising[i] = TakeTurnOff(rising[i]);
            turning[i] = WrapBothWays(turning[i]);
        }
    }
};

void Advance(ClockPhases& phases, int frames)
{
    PhaseVectors vectors;
    vectors.Load(phases);
    while (frames > 0) {
        const int run = std::min(frames, framesPerRun);
        const bool needsNoWrap = vectors.StayWithinTurn(run);
        for (int frame = 0; frame < run; ++frame) {
            vectors.Step();
            if (!needsNoWrap)
                vectors.Wrap();
        }
        frames -= run;
    }
    vectors.Store(phases);
}

} // namespace HWY_NAMESPACE
} // namespace velotrine

HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace velotrine {

HWY_EXPORT(Advance);

void ClockPhases::advance(int frames) noexcept VELOTRINE_NONBLOCKING
{
    // A table of pointers, one for each instruction set, none of which waits for anything.
    VELOTRINE_UNFOLLOWED(HWY_DYNAMIC_DISPATCH(Advance)(*this, frames);)
}

} // namespace velotrine

#endif
