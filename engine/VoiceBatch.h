#pragma once

#include "engine/FMVoice.h"
#include "engine/Nonblocking.h"

#include <span>

namespace velotrine {

/// Voices rendered together at most.
inline constexpr int maxBatchVoices = 16;

/// Adds the next samples of several sounding voices to the buffer and moves the voices on. One voice alone
/// sounds as it does in company. ScalarVoice::render in tests/reference/ScalarTranscription.cpp says the same
/// one sample after the other.
/// @param voices  all active, at most maxBatchVoices
/// @param buffer  mono, at least `frames` long
/// @param frames  0 or more
void renderVoices(std::span<FMVoice* const> voices, float* buffer, int frames) noexcept VELOTRINE_NONBLOCKING;

} // namespace velotrine
