#pragma once

#include "engine/ParameterAddress.h"
#include "engine/RandomGenerator.h"
#include "platform/AUFullState.h"

#include <array>
#include <cstdint>
#include <optional>

namespace velotrine {

/// All that an instrument's state says, as plain values.
struct Settings
{
    std::array<float, parameterCount> values{}; ///< by address
    std::optional<AUAudioUnitPreset> preset{};  ///< the one chosen last
    std::uint32_t seed = defaultSeed;
    bool sameMusicAtEveryStart = false;

    bool operator==(const Settings&) const = default;
};

/// What the state says of parameters, bounded to their ranges, and the base's values for those that it does
/// not name; all else as the state says it, or as an instrument is made.
[[nodiscard]] Settings settingsFromState(const AUFullState& state, const Settings& base);

/// The same as a state that names every parameter, in the tree's order.
[[nodiscard]] AUFullState stateFromSettings(const Settings& settings);

/// The state that turns one into the other: of the parameters it names those that differ.
[[nodiscard]] AUFullState stateThatChanges(const Settings& from, const Settings& to);

/// Whether a parameter's two values are the same to a person. A host may hand one back with another last
/// digit.
[[nodiscard]] bool areAlike(ParameterAddress address, float value, float other);

} // namespace velotrine
