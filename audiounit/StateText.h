#pragma once

#include "platform/AUAudioUnit.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velotrine {

/// A state larger than this is not one of ours.
inline constexpr std::size_t maxStateBytes = std::size_t{1} << 20;

/// Writes a state as JSON, version 1: the same text for the same state, values in as few digits as give them
/// back. A value that is not finite, which JSON cannot say, is left out.
[[nodiscard]] std::string textFromState(const AUFullState& state);

/// A state, or a sentence that says what is wrong with the text and where.
struct StateFromText
{
    std::optional<AUFullState> state;
    std::string error;
};

/// Reads such a text; values come in the parameter tree's order, whatever their order in the text. Strict
/// about form: it must be JSON of version 1, of the right types, with finite numbers, within maxStateBytes.
/// Forgiving about content: identifiers may be missing, unknown or repeated, and values out of range. Never
/// throws for what the text says.
[[nodiscard]] StateFromText stateFromText(std::string_view text);

} // namespace velotrine
