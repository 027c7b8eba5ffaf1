#pragma once

#include "engine/ParameterAddress.h"
#include "engine/RingCount.h"

namespace velotrine {

inline constexpr double workloadSampleRate = 48000.0;

/// The instrument at its worst: five rings of sixteen spots, all firing, long notes, fast; sixteen voices
/// sound always.
/// @param probability  1 for that; 0 for clock and rings alone
template <typename Instrument>
void setWorkload(Instrument& instrument, float probability)
{
    instrument.setParameter(addressOf(GlobalParameter::activity), 1.0f);
    instrument.setParameter(addressOf(GlobalParameter::calories), 1.0f);
    instrument.setParameter(addressOf(GlobalParameter::drudgery), 0.5f);
    instrument.setParameter(addressOf(GlobalParameter::bpm), 300.0f);
    instrument.setParameter(addressOf(GlobalParameter::sync), 0.0f);
    for (int ring = 0; ring < ringCount; ++ring) {
        instrument.setParameter(addressOf(RingParameter::spots, ring), static_cast<float>(maxSpotsPerRing));
        instrument.setParameter(addressOf(RingParameter::probability, ring), probability);
        instrument.setParameter(addressOf(RingParameter::timbre, ring), 0.0f);
    }
}

/// Ready to play the workload, from its first frame.
template <typename Instrument>
void startWorkload(Instrument& instrument, float probability, int maxFrames)
{
    setWorkload(instrument, probability);
    instrument.setup(maxFrames, workloadSampleRate);
    instrument.internalPlaying = true;
}

} // namespace velotrine
