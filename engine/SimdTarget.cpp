#include "engine/SimdTarget.h"

#include <hwy/highway.h>

namespace velotrine {

namespace {

std::vector<SimdTarget> detectTargets()
{
    const auto compiled = static_cast<std::int64_t>(HWY_TARGETS);
    std::vector<SimdTarget> targets;
    const auto supported = hwy::SupportedTargets() | static_cast<std::int64_t>(HWY_STATIC_TARGET);
    // The lower the bit, the newer the instruction set.
    for (auto left = supported & compiled; left != 0; left &= left - 1) {
        const auto lowest = left & -left;
        targets.push_back({lowest, hwy::TargetName(lowest)});
    }
    return targets;
}

} // namespace

const std::vector<SimdTarget>& availableSimdTargets()
{
    // Detected once, before anything is forced: afterwards only the forced one would seem to be there.
    static const auto targets = detectTargets();
    return targets;
}

void forceSimdTarget(const SimdTarget& target)
{
    static_cast<void>(availableSimdTargets());
    hwy::SetSupportedTargetsForTest(target.id);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

} // namespace velotrine
