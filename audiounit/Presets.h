#pragma once

#include "engine/ParameterAddress.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

/// The number of the preset that a person means by its name, in upper or lower case, or by its number.
[[nodiscard]] std::optional<std::size_t> presetFromText(std::string_view text);

/// Their names, by number.
[[nodiscard]] std::vector<std::string> presetNames();

} // namespace velotrine
