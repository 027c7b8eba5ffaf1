#pragma once

#include "render/RenderOptions.h"

namespace velotrine {

/// Renders one piece as a host would: makes the audio unit, plays its internal clock for the asked length,
/// stops it, lets it ring out, and writes all outputs. Either all of them appear or none. Throws UsageError
/// for a state file that is not one, WorkError, or Interrupted.
void runRenderJob(const RenderOptions& options);

} // namespace velotrine
