#pragma once

#include "platform/AUAudioUnit.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velotrine {

/// A state larger than this is not one of ours.
inline constexpr std::size_t maxStateBytes = std::size_t{1} << 20;

/// A key and its value as JSON.
using JsonMember = std::pair<std::string, std::string>;

/// Writes an object, a member a line, indented by its depth in the document. Throws std::bad_alloc in a
/// shortage of memory.
[[nodiscard]] std::string jsonObject(const std::vector<JsonMember>& members, int depth);

/// Writes a state as JSON, version 1: the same text for the same state, values in as few digits as give them
/// back. A value that is not finite, which JSON cannot say, is left out. Throws std::bad_alloc in a shortage
/// of memory.
/// @param furtherMembers  of the caller's own, for the document's end
[[nodiscard]] std::string textFromState(const AUFullState& state,
                                        const std::vector<JsonMember>& furtherMembers = {});

/// A state, or a sentence that says what is wrong with the text and where.
struct StateReading
{
    std::optional<AUFullState> state;
    std::string error;
};

/// Reads such a text; values come in the parameter tree's order, whatever their order in the text. Strict
/// about form: it must be JSON of version 1, of the right types, with finite numbers, within maxStateBytes.
/// Forgiving about content: identifiers may be missing, unknown or repeated, and values out of range. Never
/// throws for what the text says.
[[nodiscard]] StateReading stateFromText(std::string_view text);

} // namespace velotrine
