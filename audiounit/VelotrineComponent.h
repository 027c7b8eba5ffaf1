#pragma once

#include "platform/AudioComponentDescription.h"

#include <cstdint>

namespace velotrine {

/// Type 'augn', subtype "VelI", maker "mb*k".
[[nodiscard]] AudioComponentDescription velotrineComponentDescription() noexcept;

inline constexpr const char* velotrineComponentName = "Marrowbeck: Velotrine (In-Process)";
inline constexpr std::uint32_t velotrineComponentVersion = 0x00010000; ///< 1.0.0

/// Makes VelotrineAudioUnit known in this process, so that AUAudioUnit::instantiate() finds it under the
/// description above. Further calls do nothing. Main thread.
void registerVelotrineComponent();

} // namespace velotrine
