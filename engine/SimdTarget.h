#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velotrine {

/// An instruction set for which the engine's loops were compiled.
struct SimdTarget
{
    std::int64_t id;
    std::string name; ///< such as "AVX2"
};

/// Those that this machine can run, the fastest first. The engine chooses the first by itself.
[[nodiscard]] const std::vector<SimdTarget>& availableSimdTargets();

/// Makes the whole process use this one, for tests and benchmarks. Not while anything renders.
void forceSimdTarget(const SimdTarget& target);

} // namespace velotrine
