#pragma once

#include <juce_graphics/juce_graphics.h>

namespace velotrine {

/// @param white  0 is black, 1 is white
/// @param alpha  0 is transparent, 1 is opaque
[[nodiscard]] inline juce::Colour grey(float white, float alpha = 1.0f)
{
    return juce::Colour::greyLevel(white).withAlpha(alpha);
}

namespace colours {

inline const juce::Colour background = grey(0.25f); ///< of windows and of unlit spots
inline const juce::Colour panel = grey(0.35f);
inline const juce::Colour field = grey(0.15f);
inline const juce::Colour text = grey(1.0f);

} // namespace colours

} // namespace velotrine
