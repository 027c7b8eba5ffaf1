#include "plugin/HostValue.h"

#include "audiounit/Parameters.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

std::optional<float> valueFromHost(ParameterAddress address, double value) noexcept VELOTRINE_NONBLOCKING
{
    if (address >= parameterCount || !std::isfinite(value))
        return std::nullopt;
    // Made with the first instrument, and only read from then on.
    VELOTRINE_UNFOLLOWED(const auto& info = parameterTable()[address];)
    const auto bounded =
        std::clamp(value, static_cast<double>(info.minValue), static_cast<double>(info.maxValue));
    return static_cast<float>(info.isDiscrete() ? std::round(bounded) : bounded);
}

} // namespace velotrine
