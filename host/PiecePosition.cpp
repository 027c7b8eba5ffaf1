#include "host/PiecePosition.h"

#include <algorithm>

namespace velotrine {

PiecePosition::PiecePosition(const VelotrineDSPKernel& kernel) noexcept
    : clockPhase(kernel.clockPhase), lfoPhases(kernel.lfoPhases), lastSpotIndex(kernel.lastSpotIndex),
      ringInitialised(kernel.ringInitialised), lastRingPhase(kernel.lastRingPhase),
      lastPitchClass(kernel.lastPitchClass), hostPlayingLast(kernel.hostPlayingLast),
      internalPlayingLast(kernel.internalPlayingLast)
{
    std::ranges::copy(kernel.activityPhases, activityPhases.begin());
    std::ranges::copy(kernel.lfoOffsets, lfoOffsets.begin());
}

void PiecePosition::putBack(VelotrineDSPKernel& kernel) const noexcept
{
    kernel.clockPhase = clockPhase;
    kernel.clockPhaseBuf = clockPhase;
    std::ranges::copy(activityPhases, kernel.activityPhases.begin());
    std::ranges::copy(lfoOffsets, kernel.lfoOffsets.begin());
    kernel.lfoPhases = lfoPhases;
    kernel.lastSpotIndex = lastSpotIndex;
    kernel.ringInitialised = ringInitialised;
    kernel.lastRingPhase = lastRingPhase;
    kernel.lastPitchClass = lastPitchClass;
    kernel.hostPlayingLast = hostPlayingLast;
    kernel.internalPlayingLast = internalPlayingLast;
}

} // namespace velotrine
