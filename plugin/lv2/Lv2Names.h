#pragma once

#include "engine/ParameterAddress.h"

#include <cstdint>

// What the Turtle files, the plug-in and its editor must call alike. Stable for ever: sessions refer to them.

namespace velotrine {

inline constexpr auto lv2PluginUri = "https://marrowbeck.example/plugins/velotrine";
inline constexpr auto lv2UiUri = "https://marrowbeck.example/plugins/velotrine#ui";

/// The property under which a session keeps the state's text.
inline constexpr auto lv2StateUri = "https://marrowbeck.example/plugins/velotrine#state";

/// Port indices. Before these, the parameters, each at its address.
namespace lv2Port {
inline constexpr std::uint32_t left = parameterCount;
inline constexpr std::uint32_t right = left + 1;
inline constexpr std::uint32_t time = right + 1;
} // namespace lv2Port

} // namespace velotrine
