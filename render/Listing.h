#pragma once

#include <string>

namespace velotrine {

/// The factory presets, one a line, or as JSON with all their values.
[[nodiscard]] std::string presetListing(bool asJson);

/// The parameters as a table, or as JSON.
[[nodiscard]] std::string parameterListing(bool asJson);

} // namespace velotrine
