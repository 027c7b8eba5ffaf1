#pragma once

#include "host/DesktopSettings.h"

#include <optional>

namespace velotrine {

// Pixels a point. Beyond these bounds a window is too small to read, or too large to see whole.
inline constexpr double smallestScale = 0.5;
inline constexpr double largestScale = 8.0;

/// Pixels a point that the desktop asks for. The first of these to say so in numbers that make sense wins:
/// its settings manager (Gdk/WindowScalingFactor, and where that leaves it at 1, Xft/DPI), the X server's
/// resources (Xft.dpi), and GDK_SCALE. None when nobody says anything.
[[nodiscard]] std::optional<double> desktopScale(const DesktopSettings& settings);

} // namespace velotrine
