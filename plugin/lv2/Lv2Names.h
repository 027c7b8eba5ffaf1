#pragma once

#include "audiounit/Identity.h"
#include "engine/ParameterAddress.h"

#include <cstdint>

// What the Turtle files, the plug-in and its editor share. It never changes: sessions refer to it.

namespace velotrine {

using identity::lv2PluginUri;
using identity::lv2StateUri;
using identity::lv2UiUri;

/// Port indices. The parameters come first, each at its address.
namespace lv2Port {
inline constexpr std::uint32_t left = parameterCount;
inline constexpr std::uint32_t right = left + 1;
inline constexpr std::uint32_t time = right + 1;
inline constexpr std::uint32_t notes = time + 1;
} // namespace lv2Port

} // namespace velotrine
