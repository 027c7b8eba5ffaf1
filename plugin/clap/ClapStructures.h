#pragma once

#include <clap/plugin.h>

namespace velotrine {

class ClapPlugin;

/// The format's structure of functions, which call those of the plug-in.
[[nodiscard]] clap_plugin_t clapStructureOf(ClapPlugin& plugin, const clap_plugin_descriptor_t& descriptor);

/// The structure of an extension; null for one that there is not.
[[nodiscard]] const void* clapExtension(const char* id);

} // namespace velotrine
