#include "engine/SoftClip.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "engine/SoftClip.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include <hwy/contrib/math/math-inl.h>

HWY_BEFORE_NAMESPACE();

namespace velotrine {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;

HWY_INLINE void ClipVector(const float* mix, float gain, float* left, float* right)
{
    const Floats d;
    const auto product = hn::Mul(hn::Set(d, gain), hn::LoadU(d, mix));
    // An approximation of tanh may be a rounding beyond 1.
    const auto one = hn::Set(d, 1.0f);
    const auto bounded = hn::Clamp(hn::Tanh(d, product), hn::Neg(one), one);
    const auto clipped = hn::IfThenElseZero(hn::IsFinite(product), bounded);
    hn::StoreU(clipped, d, left);
    hn::StoreU(clipped, d, right);
}

void SoftClip(const float* mix, float gain, float* left, float* right, int frames)
{
    const int step = static_cast<int>(hn::Lanes(Floats()));
    int frame = 0;
    for (; frame + step <= frames; frame += step)
        ClipVector(mix + frame, gain, left + frame, right + frame);

    // The last frames fill only part of a vector.
    const int rest = frames - frame;
    float padded[hn::MaxLanes(Floats())] = {};
    std::copy_n(mix + frame, rest, padded);
    ClipVector(padded, gain, padded, padded);
    std::copy_n(padded, rest, left + frame);
    std::copy_n(padded, rest, right + frame);
}

} // namespace HWY_NAMESPACE
} // namespace velotrine

HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace velotrine {

HWY_EXPORT(SoftClip);

void softClip(const float* mix, float gain, float* left, float* right,
              int frames) noexcept VELOTRINE_NONBLOCKING
{
    // A table of pointers, one for each instruction set, none of which waits for anything.
    VELOTRINE_UNFOLLOWED(HWY_DYNAMIC_DISPATCH(SoftClip)(mix, gain, left, right, frames);)
}

} // namespace velotrine

#endif
