#pragma once

#include "platform/AUAudioUnitPreset.h"
#include "platform/AudioTypes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace velotrine {

/// A switch or a number.
using AUFurtherValue = std::variant<bool, std::uint32_t>;

/// Everything of an audio unit that a session remembers: values by parameter identifier, in the tree's order,
/// which preset was chosen last, and by name what else the unit remembers that is not as it was made.
struct AUFullState
{
    std::vector<std::pair<std::string, AUValue>> parameters;
    std::optional<AUAudioUnitPreset> currentPreset;
    std::vector<std::pair<std::string, AUFurtherValue>> furtherValues{};

    bool operator==(const AUFullState&) const = default;
};

} // namespace velotrine
