#pragma once

#include "engine/Nonblocking.h"
#include "engine/ParameterAddress.h"

#include <optional>

namespace velotrine {

/// What an instrument makes of a value that a host hands over: bounded to the parameter's range, and to a
/// whole number where the parameter has steps. None for a value that is not finite and for an address that no
/// parameter has. Any thread; never waits.
[[nodiscard]] std::optional<float> valueFromHost(ParameterAddress address,
                                                 double value) noexcept VELOTRINE_NONBLOCKING;

} // namespace velotrine
