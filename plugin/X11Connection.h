#pragma once

#include <X11/Xlib.h>

namespace velotrine {

/// JUCE's connection to the X server; null while it has none.
[[nodiscard]] Display* x11Connection() noexcept;

/// Interns the atoms that JUCE looks up as it starts. Window managers do so, but where none runs JUCE would
/// go on with null atoms, and the X server's error would end the host. False if there is no X server.
bool prepareX11Server();

} // namespace velotrine
