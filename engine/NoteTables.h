#pragma once

#include <array>
#include <cstddef>

namespace velotrine {

inline constexpr std::size_t pitchClassCount = 12;

/// Weights of the next note, by its distance above the root in semitones. They need not sum exactly to 1.
using NoteWeights = std::array<float, pitchClassCount>;

/// Scales in the order of the parameter `scaleType`: Major, Minor, Major Pentatonic, Minor Pentatonic. A
/// scale is expressed by its weights alone. Notes outside a pentatonic scale have weight 0 in its rows, and
/// their own rows are all 0.
inline constexpr std::size_t scaleCount = 4;

/// Weights of the next note for each scale and each previous note (semitones above the root).
using TransitionTable = std::array<std::array<NoteWeights, pitchClassCount>, scaleCount>;

/// Three ways in which notes follow each other, learned from three bodies of music (engine/data/README.md).
/// Boredom blends from one to the next.
extern const TransitionTable lowTransitions;    ///< Boredom 0
extern const TransitionTable middleTransitions; ///< Boredom 0.35
extern const TransitionTable highTransitions;   ///< Boredom 0.7

/// Weights of the first note after a start, for each scale.
inline constexpr std::array<NoteWeights, scaleCount> initialWeights{{
    {0.7f, 0, 0, 0, 0, 0, 0, 0.2f, 0, 0, 0, 0.1f},
    {0.7f, 0, 0, 0, 0, 0, 0, 0.2f, 0, 0, 0.1f, 0},
    {0.7f, 0, 0, 0, 0.1f, 0, 0, 0.2f, 0, 0, 0, 0},
    {0.7f, 0, 0, 0, 0, 0, 0, 0.2f, 0, 0, 0.1f, 0},
}};

} // namespace velotrine
