#pragma once

#include <X11/Xlib.h>

namespace velotrine {

/// JUCE's connection to the X server; none while it has none.
[[nodiscard]] Display* x11Connection() noexcept;

/// Makes known to the X server the names that JUCE asks it for as it starts. Window managers do so, but where
/// none runs JUCE would go on with none at all, and the server's answer to that ends the host.
/// False if there is no X server.
bool prepareX11Server();

} // namespace velotrine
