#pragma once

namespace velotrine {

// What can be seen and touched in an editor of the size that it has at first.

inline constexpr unsigned editorWidth = 480;
inline constexpr unsigned editorHeight = 360;

/// An editor has more colours than this, for text and rings are smoothed; an empty window has one.
inline constexpr int manyColours = 30;

/// The middle of the first knob, activity, as xdotool wants it.
inline constexpr auto knob = "432 62";

/// Left of all knobs. The rings may move by themselves, the knobs do not.
inline constexpr int knobsLeft = 390;

/// The tempo stands above the play button at the lower left.
inline constexpr auto tempoField = "75 315";

} // namespace velotrine
