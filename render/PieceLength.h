#pragma once

#include "render/RenderOptions.h"
#include "takes/Take.h"

#include <cstdint>

namespace velotrine {

/// Which frames of a piece are written, counted from its beginning.
struct PieceFrames
{
    std::int64_t from;
    std::int64_t end; ///< above from
};

/// Finds them by playing the take without a sound. Throws UsageError where the options ask for a bar that
/// never comes, and for more than a day.
/// @param sampleRate  at which it is rendered, Hz
[[nodiscard]] PieceFrames framesOf(const Take& take, const RenderOptions& options, int sampleRate);

} // namespace velotrine
