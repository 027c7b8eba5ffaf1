#pragma once

namespace velotrine {

// What can be seen and touched in an editor of its initial size.

inline constexpr unsigned editorWidth = 480;
inline constexpr unsigned editorHeight = 360;

/// An editor has more colours than this, since text and rings are smoothed; an empty window has one.
inline constexpr int manyColours = 30;

/// The middle of the first knob, activity, as xdotool wants it.
inline constexpr auto knob = "432 62";

/// The column left of all knobs. The rings may move by themselves; the knobs do not.
inline constexpr int knobsLeft = 390;

/// The tempo stands above the play button at the lower left.
inline constexpr auto tempoField = "75 315";
inline constexpr auto tempoFieldsEnd = "98 315";
inline constexpr auto syncButton = "22 280";
inline constexpr auto scaleButton = "176 22";
inline constexpr auto bareGround = "30 70";
inline constexpr auto innermostRing = "292 192";

// Of the panel that a click on a ring brings up.
inline constexpr auto panelGround = "30 70";
inline constexpr auto panelTitle = "60 60";
inline constexpr auto stepsField = "215 87";
inline constexpr auto luckField = "215 142";

} // namespace velotrine
