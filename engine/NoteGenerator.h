#pragma once

#include "engine/Nonblocking.h"
#include "engine/NoteTables.h"

#include <cstdint>

namespace velotrine {

/// The weights of the next note after `previous`: Boredom leads from the low table (0) over the middle one
/// (0.35) to the high one (0.7), and from there to all twelve notes alike (1). Linear in between, in single
/// precision.
/// @param scale     0 to 3; others are a fatal error
/// @param previous  semitones above the root, 0 to 11; others are a fatal error
/// @param boredom   bounded to 0..1; NaN counts as 0
[[nodiscard]] NoteWeights shapedRow(std::int64_t scale, std::int64_t previous,
                                    float boredom) noexcept VELOTRINE_NONBLOCKING;

/// What the root and scale parameters and the last note say about the next one.
struct NoteContext
{
    std::int64_t root;           ///< 0 to 11, C is 0; a negative one is used as it is
    std::int64_t scale;          ///< 0 to 3
    std::int64_t lastPitchClass; ///< 0 to 11; negative at the start of a run
    float boredom;
};

/// Draws the pitch class of the next note: one step of a first-order Markov chain, one random number. Where
/// the weights leave no choice (after a note that the scale does not have) it is the root, and nothing is
/// drawn.
/// @param rngState  the generator's state; stepped when a number is drawn
[[nodiscard]] std::int64_t drawPitchClass(const NoteContext& context,
                                          std::uint64_t& rngState) noexcept VELOTRINE_NONBLOCKING;

} // namespace velotrine
