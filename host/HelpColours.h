#pragma once

#include "editor/Colours.h"

namespace velotrine::helpColours {

inline const juce::Colour bgColor = grey(0.18f);
inline const juce::Colour textColor = grey(1.0f);
inline const juce::Colour dimColor = grey(1.0f, 0.55f);
inline const juce::Colour accentColor = grey(1.0f, 0.22f);

} // namespace velotrine::helpColours
