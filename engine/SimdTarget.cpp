#include "engine/SimdTarget.h"

#include <hwy/highway.h>

namespace velotrine {

std::vector<SimdTarget> availableSimdTargets()
{
    // Without an earlier choice: what the processor has.
    hwy::SetSupportedTargetsForTest(0);
    const auto compiled = static_cast<std::int64_t>(HWY_TARGETS);
    std::vector<SimdTarget> targets;
    // The lower the bit, the newer the instruction set.
    for (auto left = hwy::SupportedTargets() & compiled; left != 0; left &= left - 1) {
        const auto lowest = left & -left;
        targets.push_back({lowest, hwy::TargetName(lowest)});
    }
    return targets;
}

void forceSimdTarget(const SimdTarget& target)
{
    hwy::SetSupportedTargetsForTest(target.id);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

} // namespace velotrine
