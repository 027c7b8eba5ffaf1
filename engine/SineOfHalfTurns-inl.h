// A vector sine, compiled once for each instruction set: no ordinary include guard.
#if defined(VELOTRINE_SINE_OF_HALF_TURNS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELOTRINE_SINE_OF_HALF_TURNS_INL_H
#undef VELOTRINE_SINE_OF_HALF_TURNS_INL_H
#else
#define VELOTRINE_SINE_OF_HALF_TURNS_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>

HWY_BEFORE_NAMESPACE();

namespace velotrine {
namespace HWY_NAMESPACE {

/// Vectors whose sines go in step, so that while one waits for its result the processor has the others to
/// work on. Large processors look far enough ahead in the program to find such work themselves, and step by
/// step too much would have to be put aside for it. Small ones with NEON take instructions as they come.
constexpr std::size_t sinesInStep = HWY_TARGET == HWY_NEON ? 8 : 1;

/// sin(pi t), t in half turns, |t| below 2^51; off by at most 9e-17 and a few roundings. An infinite t gives
/// NaN.
///
/// With n the whole number nearest to t and r = t - n, at most a half, it is (-1)^n sin(pi r), and sin(pi r)
/// = r P(r^2). P, of degree 7, is the polynomial that makes the largest error smallest (scripts/fit-sine). It
/// is evaluated in pairs (Estrin), because a modulator waits for its own sine of the sample before.
///
/// Of whole turns, both n and r would take a multiplication more, in a loop that multiplies as often as the
/// processor can.
template <std::size_t count, class D, class V = hwy::HWY_NAMESPACE::Vec<D>>
HWY_INLINE void SinesInStep(D d, V* halfTurns)
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
    each([&](std::size_t i) HWY_ATTR { shifted[i] = hn::Add(halfTurns[i], roundingShift); });
    each([&](std::size_t i) HWY_ATTR { r[i] = hn::Sub(halfTurns[i], hn::Sub(shifted[i], roundingShift)); });
    each([&](std::size_t i) HWY_ATTR { u[i] = hn::Mul(r[i], r[i]); });
    each([&](std::size_t i) HWY_ATTR {
        u2[i] = hn::Mul(u[i], u[i]);
        p01[i] = hn::MulAdd(hn::Set(d, -5.167712780049385), u[i], hn::Set(d, 3.14159265358979));
        p23[i] = hn::MulAdd(hn::Set(d, -0.5992645284958555), u[i], hn::Set(d, 2.5501640398445717));
        p45[i] = hn::MulAdd(hn::Set(d, -0.007370347469054702), u[i], hn::Set(d, 0.08214587559646358));
        p67[i] = hn::MulAdd(hn::Set(d, -2.1085689763710893e-05), u[i], hn::Set(d, 0.00046594206887974236));
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
    each([&](std::size_t i) HWY_ATTR { halfTurns[i] = hn::Mul(r[i], p01[i]); });
}

/// The sines of several vectors, in place.
template <std::size_t count, class D, class V = hwy::HWY_NAMESPACE::Vec<D>>
HWY_INLINE void SinesOfHalfTurns(D d, V (&halfTurns)[count])
{
    constexpr std::size_t inStep = std::min(count, sinesInStep);
    static_assert(count % inStep == 0);
    for (std::size_t first = 0; first < count; first += inStep)
        SinesInStep<inStep>(d, halfTurns + first);
}

} // namespace HWY_NAMESPACE
} // namespace velotrine

HWY_AFTER_NAMESPACE();

#endif
