#pragma once

#include "platform/AUFullState.h"

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string_view>

// A state's text, parsed: for who keeps members of its own in it (see plugin/HostedState.cpp). The library's
// header is slow to compile, so only sources include this; StateText.h hides it from everyone else.

namespace velotrine {

using StateDocument = nlohmann::json;

/// A text that is not a state; the message is a sentence that says why.
struct StateRefusal : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Throws StateRefusal unless the text is JSON within maxStateBytes.
[[nodiscard]] StateDocument parseState(std::string_view text);

/// The audio unit's part of the document; other members are passed over. Throws StateRefusal where it is not
/// what stateFromText() takes.
[[nodiscard]] AUFullState stateFromDocument(const StateDocument& document);

} // namespace velotrine
