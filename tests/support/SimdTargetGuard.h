#pragma once

#include "engine/SimdTarget.h"

namespace velotrine {

/// Restores the instruction set that the engine chose when a test is over.
class SimdTargetGuard
{
public:
    SimdTargetGuard() : chosen(availableSimdTargets().front()) {}

    SimdTargetGuard(const SimdTargetGuard&) = delete;
    SimdTargetGuard& operator=(const SimdTargetGuard&) = delete;

    ~SimdTargetGuard() { forceSimdTarget(chosen); }

private:
    SimdTarget chosen;
};

} // namespace velotrine
