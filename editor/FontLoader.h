#pragma once

#include <juce_graphics/juce_graphics.h>

#include <cstddef>
#include <span>

namespace velotrine {

/// PostScript name of the instrument's own typeface, whose file lies among the program's data.
inline constexpr const char* displayFontName = "EverydaySansSerif-Regular";

/// Makes the display font available to this process, at the first call. A failure is one line on standard
/// output, once, and then everybody gets the system's font. Main thread.
void registerDisplayFont();

/// Registers other bytes instead, as if for the first time. For tests.
/// @param otf  an OpenType file; empty for a program that has lost its data
void registerDisplayFontFrom(std::span<const std::byte> otf);

/// The display font, or the system's if it could not be registered. Call registerDisplayFont() first.
/// @param points  size of the em, 1 point being one logical pixel
[[nodiscard]] juce::Font displayFont(float points);

/// The system's sans serif.
/// @param points  as above
[[nodiscard]] juce::Font systemFont(float points, bool bold = false);

} // namespace velotrine
