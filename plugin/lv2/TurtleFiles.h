#pragma once

#include <string>

// The files that tell an LV2 host of the plug-in before it is loaded, as Turtle texts.

namespace velotrine {

/// Of the whole bundle: which plug-in, editor and presets there are, and which file says more of each.
[[nodiscard]] std::string manifestTurtle();

/// Ports and features of the plug-in and of its editor.
/// @param majorVersion, minorVersion, patchVersion  of the program
[[nodiscard]] std::string pluginTurtle(int majorVersion, int minorVersion, int patchVersion);

/// A value for each control port in each of the factory presets.
[[nodiscard]] std::string presetsTurtle();

} // namespace velotrine
