#pragma once

#include <cstdint>
#include <string_view>

namespace velotrine {

/// Who a component is: three four-character codes, and flags that this framework does not use.
struct AudioComponentDescription
{
    std::uint32_t componentType = 0;
    std::uint32_t componentSubType = 0;
    std::uint32_t componentManufacturer = 0;
    std::uint32_t componentFlags = 0;
    std::uint32_t componentFlagsMask = 0;

    bool operator==(const AudioComponentDescription&) const = default;
};

enum class AudioComponentInstantiationOptions : std::uint32_t
{
    none = 0,
    loadOutOfProcess = 1,
    loadInProcess = 2,
};

/// A component that makes sound without input.
inline constexpr std::uint32_t kAudioUnitType_Generator = 0x6175676E; // 'augn'

/// The first four bytes of a text as a number, first byte highest. Shorter texts give fewer significant
/// bytes.
[[nodiscard]] std::uint32_t fourCharCode(std::string_view text) noexcept;

} // namespace velotrine
