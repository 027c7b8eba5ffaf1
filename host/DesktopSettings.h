#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velotrine {

/// What an X desktop and the environment say about the size of things, unparsed. Empty where they say
/// nothing.
struct DesktopSettings
{
    std::vector<std::byte> xSettings; ///< as the desktop's settings manager publishes them
    std::string resources;            ///< the X server's resources, a line each
    std::string gdkScale;             ///< the variable GDK_SCALE
};

/// Asks the X server over a connection of its own. Without one, or on another system, only the environment
/// is left. Any one thread.
[[nodiscard]] DesktopSettings readDesktopSettings();

} // namespace velotrine
