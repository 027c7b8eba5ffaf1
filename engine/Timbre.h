#pragma once

#include "engine/Nonblocking.h"

namespace velotrine {

/// What a ring's timbre means to the voice that plays its notes.
struct TimbreParameters
{
    double modRatio;    ///< modulator frequency as a multiple of the carrier's
    float modIndex;     ///< modulation index at the start of a note, in radians
    float decaySeconds; ///< time in which a note falls by 60 dB
};

/// From soft and long (timbre 0) to bright and short (timbre 1), linear between five points. Beyond the ends
/// the end's own values hold; NaN is a fatal error.
[[nodiscard]] TimbreParameters timbreParameters(float timbre) noexcept VELOTRINE_NONBLOCKING;

} // namespace velotrine
