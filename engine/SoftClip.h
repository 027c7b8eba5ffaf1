#pragma once

#include "engine/Nonblocking.h"

namespace velotrine {

/// Writes tanh(gain x mix) to both channels; 0 where that product is not finite. Within 3e-7 of the exact
/// tanh.
/// @param left, right  at least `frames` long; may be the same memory
void softClip(const float* mix, float gain, float* left, float* right,
              int frames) noexcept VELOTRINE_NONBLOCKING;

} // namespace velotrine
