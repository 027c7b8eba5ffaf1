// A vector sine, compiled once for each instruction set: no ordinary include guard.
#if defined(VELOTRINE_SINE_OF_TURNS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELOTRINE_SINE_OF_TURNS_INL_H
#undef VELOTRINE_SINE_OF_TURNS_INL_H
#else
#define VELOTRINE_SINE_OF_TURNS_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>

HWY_BEFORE_NAMESPACE();

namespace velotrine {
namespace HWY_NAMESPACE {

/// Vectors whose sines go in step, so that while one waits for its result the processor has the others to
/// work on. Where there are sixteen registers instead of thirty-two, what has to be put aside for that costs
/// more than the waiting, which the processor then fills from further ahead in the program.
constexpr std::size_t sinesInStep = HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_NEON ? 8 : 1;

/// sin(2 pi t), t in turns, |t| below 2^50; off by at most 9e-17 and a few roundings. An infinite t gives
/// NaN.
///
/// With n the whole number nearest to 2 t and r = t - n / 2, at most a quarter turn, it is (-1)^n sin(2 pi
/// r), and sin(2 pi r) = r P(r^2). P, of degree 7, is the polynomial that makes the largest error smallest
/// (scripts/fit-sine). It is evaluated in pairs (Estrin), because a modulator waits for its own sine of the
/// sample before.
template <std::size_t count, class D, class V = hwy::HWY_NAMESPACE::Vec<D>>
HWY_INLINE void SinesInStep(D d, V* turns)
{
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::RebindToUnsigned<D> bits;
    const auto each = [](auto&& step) HWY_ATTR {
        for (std::size_t i = 0; i < count; ++i)
            step(i);
    };

    // Adding 1.5 x 2^52 rounds to a whole number, and leaves its lowest bit, odd or even, as the lowest of
    // all.
    const V roundingShift = hn::Set(d, 6755399441055744.0);
    V shifted[count];
    V r[count];
    V u[count];
    V u2[count];
    V u4[count];
    V p01[count];
    V p23[count];
    V p45[count];
    V p67[count];
    each([&](std::size_t i) HWY_ATTR { shifted[i] = hn::MulAdd(turns[i], hn::Set(d, 2.0), roundingShift); });
    each([&](std::size_t i) HWY_ATTR { r[i] = hn::Sub(shifted[i], roundingShift); });
    each([&](std::size_t i) HWY_ATTR { r[i] = hn::NegMulAdd(r[i], hn::Set(d, 0.5), turns[i]); });
    each([&](std::size_t i) HWY_ATTR { u[i] = hn::Mul(r[i], r[i]); });
    each([&](std::size_t i) HWY_ATTR {
        u2[i] = hn::Mul(u[i], u[i]);
        p01[i] = hn::MulAdd(hn::Set(d, -41.34170224039508), u[i], hn::Set(d, 6.28318530717958));
        p23[i] = hn::MulAdd(hn::Set(d, -76.70585964746951), u[i], hn::Set(d, 81.6052492750263));
        p45[i] = hn::MulAdd(hn::Set(d, -15.09447161662403), u[i], hn::Set(d, 42.05868830538935));
        p67[i] = hn::MulAdd(hn::Set(d, -0.6909358821772785), u[i], hn::Set(d, 3.8169974282628494));
    });
    each([&](std::size_t i) HWY_ATTR {
        const V signBit = hn::BitCast(d, hn::ShiftLeft<63>(hn::BitCast(bits, shifted[i])));
        r[i] = hn::Xor(r[i], signBit);
    });
    each([&](std::size_t i) HWY_ATTR {
        u4[i] = hn::Mul(u2[i], u2[i]);
        p45[i] = hn::MulAdd(p67[i], u2[i], p45[i]);
        p01[i] = hn::MulAdd(p23[i], u2[i], p01[i]);
    });
    each([&](std::size_t i) HWY_ATTR { p01[i] = hn::MulAdd(p45[i], u4[i], p01[i]); });
    each([&](std::size_t i) HWY_ATTR { turns[i] = hn::Mul(r[i], p01[i]); });
}

/// The sines of several vectors, in place.
template <std::size_t count, class D, class V = hwy::HWY_NAMESPACE::Vec<D>>
HWY_INLINE void SinesOfTurns(D d, V (&turns)[count])
{
    constexpr std::size_t inStep = std::min(count, sinesInStep);
    static_assert(count % inStep == 0);
    for (std::size_t first = 0; first < count; first += inStep)
        SinesInStep<inStep>(d, turns + first);
}

} // namespace HWY_NAMESPACE
} // namespace velotrine

HWY_AFTER_NAMESPACE();

#endif
