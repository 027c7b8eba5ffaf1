#pragma once

#include <cstdint>
#include <optional>

namespace velotrine {

/// Deinterleaved 32-bit float audio of some rate and number of channels.
struct AVAudioFormat
{
    double sampleRate = 0.0; ///< Hz
    std::uint32_t channelCount = 0;

    /// None when the rate is not a positive finite number or there are no channels.
    [[nodiscard]] static std::optional<AVAudioFormat> standardFormat(double sampleRate,
                                                                     std::uint32_t channelCount) noexcept;

    bool operator==(const AVAudioFormat&) const = default;
};

} // namespace velotrine
