#pragma once

#include <juce_core/juce_core.h>

namespace velotrine {

/// Where the application keeps what outlives it and is no preference: "Velotrine" in the folder for states,
/// which is XDG_STATE_HOME where that names one. It need not be there.
[[nodiscard]] juce::File stateFolder();

} // namespace velotrine
