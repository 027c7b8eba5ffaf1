#pragma once

#include <array>

namespace velotrine {

/// Rings are counted from the innermost, 0, to the outermost, 4.
inline constexpr int ringCount = 5;

template <typename T>
using PerRing = std::array<T, ringCount>;

/// Spots per ring that the display can show as fired.
inline constexpr int maxSpotsPerRing = 16;

} // namespace velotrine
