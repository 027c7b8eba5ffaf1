#pragma once

#include "audiounit/Identity.h"
#include "platform/AudioComponentDescription.h"

#include <cstdint>

namespace velotrine {

/// Type, subtype and maker, under which hosts find the audio unit.
[[nodiscard]] AudioComponentDescription velotrineComponentDescription() noexcept;

inline constexpr const char* velotrineComponentName = identity::componentName;

/// 16 bits of major, 8 of minor and 8 of patch version.
inline constexpr std::uint32_t velotrineComponentVersion =
    identity::majorVersion << 16U | identity::minorVersion << 8U | identity::patchVersion;

/// Makes VelotrineAudioUnit known in this process, so that AUAudioUnit::instantiate() finds it under the
/// description above. Further calls do nothing. Main thread.
void registerVelotrineComponent();

} // namespace velotrine
