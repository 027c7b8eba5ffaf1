#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>

namespace velotrine {

/// All that a stream holds, or one byte more than allowed, which is enough to be refused for its size. None
/// if the stream is not open or fails.
[[nodiscard]] std::optional<std::string> textUpTo(std::size_t mostBytes, std::istream& input);

} // namespace velotrine
