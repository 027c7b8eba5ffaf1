#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace velotrine {

/// JSON for writing: keys in the order in which they are put in, and numbers as floats, so that 0.7f reads
/// "0.7".
using OrderedJson = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t,
                                         std::uint64_t, float>;

} // namespace velotrine
