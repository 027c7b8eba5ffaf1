#pragma once

#include <juce_graphics/juce_graphics.h>

namespace velotrine {

/// Where a window goes beside another, frames included: right of it, else left, below or above it. Where no
/// side has the room, as far to one of them as the screen lets it, over as little of the other as can be.
/// Never off the screen, even if it must be smaller for that.
/// @param area  of the window; only its size counts
[[nodiscard]] juce::Rectangle<int> placedBeside(juce::Rectangle<int> neighbour, juce::Rectangle<int> area,
                                                juce::Rectangle<int> screen);

} // namespace velotrine
