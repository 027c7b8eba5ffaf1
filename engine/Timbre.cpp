#include "engine/Timbre.h"

#include "engine/FatalError.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace velotrine {

namespace {

constexpr std::array<TimbreParameters, 5> points{{
    {1.0, 0.5f, 1.2f},
    {1.5, 1.5f, 0.8f},
    {2.0, 3.0f, 0.5f},
    {3.0, 4.5f, 0.25f},
    {5.0, 6.0f, 0.1f},
}};

constexpr std::size_t lastPoint = points.size() - 1;

} // namespace

TimbreParameters timbreParameters(float timbre) noexcept VELOTRINE_NONBLOCKING
{
    if (std::isnan(timbre))
        fatalError("timbreParameters: the timbre is not a number");

    const float position = std::clamp(timbre, 0.0f, 1.0f) * static_cast<float>(lastPoint);
    const auto lower = static_cast<std::size_t>(position);
    const auto upper = std::min(lower + 1, lastPoint);
    const float fraction = position - static_cast<float>(lower);

    const auto& from = points[lower];
    const auto& to = points[upper];
    return {from.modRatio + static_cast<double>(fraction) * (to.modRatio - from.modRatio),
            from.modIndex + fraction * (to.modIndex - from.modIndex),
            from.decaySeconds + fraction * (to.decaySeconds - from.decaySeconds)};
}

} // namespace velotrine
