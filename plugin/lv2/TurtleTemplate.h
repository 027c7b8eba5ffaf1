#pragma once

#include <string>

namespace velotrine {

/// Fills in one of the templates beside this file, which together tell an LV2 host of the plug-in before it
/// is loaded: each "@NAME@" becomes the Turtle that NAME stands for, from the instrument's identity and its
/// tables of parameters and presets. Throws std::invalid_argument for a name that stands for nothing.
[[nodiscard]] std::string filledIn(const std::string& turtleTemplate);

} // namespace velotrine
