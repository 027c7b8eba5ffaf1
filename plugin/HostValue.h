#pragma once

#include "engine/Nonblocking.h"
#include "engine/ParameterAddress.h"

#include <optional>

namespace velotrine {

/// A host's value made fit for a parameter: bounded to its range, and rounded where the parameter has steps.
/// None for a value that is not finite, and for an address that no parameter has. Any thread; never waits.
[[nodiscard]] std::optional<float> valueFromHost(ParameterAddress address,
                                                 double value) noexcept VELOTRINE_NONBLOCKING;

} // namespace velotrine
