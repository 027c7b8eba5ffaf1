#pragma once

#include "engine/VelotrineDSPKernel.h"

namespace velotrine {

/// Where a kernel is in its piece: clock, rings and note chain. Carries it over a new setup(), which goes
/// back to the start. While nothing renders.
class PiecePosition
{
public:
    explicit PiecePosition(const VelotrineDSPKernel& kernel) noexcept;
    void putBack(VelotrineDSPKernel& kernel) const noexcept;

private:
    double clockPhase;
    VelotrineDSPKernel::PerRing<double> activityPhases{};
    VelotrineDSPKernel::PerRing<double> lfoOffsets{};
    VelotrineDSPKernel::PerRing<double> lfoPhases;
    VelotrineDSPKernel::PerRing<std::int64_t> lastSpotIndex;
    VelotrineDSPKernel::PerRing<bool> ringInitialised;
    VelotrineDSPKernel::PerRing<double> lastRingPhase;
    std::int64_t lastPitchClass;
    bool hostPlayingLast;
    bool internalPlayingLast;
};

} // namespace velotrine
