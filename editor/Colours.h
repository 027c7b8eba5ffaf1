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
inline const juce::Colour control = grey(1.0f, 0.13f); ///< buttons, over any background
inline const juce::Colour controlHover = grey(1.0f, 0.18f);
inline const juce::Colour controlDown = grey(1.0f, 0.26f);
inline const juce::Colour focus = grey(1.0f, 0.85f);     ///< a line round what the keyboard works on
inline const juce::Colour focusBand = grey(1.0f, 0.25f); ///< the same where a line would be taken for a ring
inline const juce::Colour track = grey(1.0f, 0.3f);      ///< of sliders and scroll bars

} // namespace colours

inline constexpr float controlCornerRadius = 4.0f; ///< points
inline constexpr float dimmedAlpha = 0.3f;         ///< of what cannot be used now

} // namespace velotrine
