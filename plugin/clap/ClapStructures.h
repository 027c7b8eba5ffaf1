#pragma once

#include <clap/plugin.h>

namespace velotrine {

class ClapPlugin;

/// The format's structure of functions, each of which calls the plug-in's.
[[nodiscard]] clap_plugin_t clapStructureOf(ClapPlugin& plugin, const clap_plugin_descriptor_t& descriptor);

/// The structure of an extension; null for one that the plug-in does not have.
[[nodiscard]] const void* clapExtension(const char* id);

} // namespace velotrine
