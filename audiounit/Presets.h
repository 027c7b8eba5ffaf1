#pragma once

#include "engine/ParameterAddress.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace velotrine {

/// A complete set of values under a name.
struct PresetInfo
{
    std::string_view name;
    std::array<float, parameterCount> values; ///< by parameter address
};

inline constexpr std::size_t presetCount = 10;

/// The factory presets, each at the index of its number.
[[nodiscard]] const std::array<PresetInfo, presetCount>& presetTable();

} // namespace velotrine
