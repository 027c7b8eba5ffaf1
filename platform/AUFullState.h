#pragma once

#include "platform/AUAudioUnitPreset.h"
#include "platform/AudioTypes.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

/// Everything of an audio unit that a session remembers: values by parameter identifier, in the tree's order,
/// and which preset was chosen last.
struct AUFullState
{
    std::vector<std::pair<std::string, AUValue>> parameters;
    std::optional<AUAudioUnitPreset> currentPreset;

    bool operator==(const AUFullState&) const = default;
};

} // namespace velotrine
