#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace velotrine {

/// One of the whole numbers among an X desktop's settings.
/// @param settings  what the desktop's settings manager publishes, as it is; whatever is wrong with it,
///                  nothing is read beyond its end
/// @return none when there is no such setting, it is no whole number, or the text breaks off before it
[[nodiscard]] std::optional<std::int32_t> xSettingsInteger(std::span<const std::byte> settings,
                                                           std::string_view name);

} // namespace velotrine
