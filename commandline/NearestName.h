#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velotrine {

/// The name that somebody most likely meant: the one with the fewest letters to change, insert or remove,
/// upper and lower case alike. Empty when none is near.
[[nodiscard]] std::string nearestName(std::string_view typed, const std::vector<std::string>& names);

/// "; did you mean "…"?" with the nearest name, or "" when none is near.
[[nodiscard]] std::string suggestion(std::string_view typed, const std::vector<std::string>& names);

} // namespace velotrine
