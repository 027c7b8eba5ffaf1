#pragma once

#include "render/RenderOptions.h"
#include "takes/Take.h"

#include <cstdint>

namespace velotrine {

/// Which frames of a piece are written, counted from its beginning.
struct PieceFrames
{
    /// Writing begins. A note on the bar line sounds from the beginning of the cycle in which the hand comes
    /// to it, so that it is whole.
    std::int64_t from;
    std::int64_t barLine; ///< the frame in which the hand comes to the bar from which is written
    std::int64_t end;     ///< the clock stops; above from, by exactly the length that was asked for
};

/// Finds them by playing the take without a sound. Throws UsageError where the options ask for a bar that
/// never comes, and for more than a day.
/// @param sampleRate  at which it is rendered, Hz
[[nodiscard]] PieceFrames framesOf(const Take& take, const RenderOptions& options, int sampleRate);

} // namespace velotrine
