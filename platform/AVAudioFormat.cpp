#include "platform/AVAudioFormat.h"

#include <cmath>

namespace velotrine {

std::optional<AVAudioFormat> AVAudioFormat::standardFormat(double sampleRate,
                                                           std::uint32_t channelCount) noexcept
{
    if (!std::isfinite(sampleRate) || sampleRate <= 0.0 || channelCount == 0)
        return std::nullopt;
    return AVAudioFormat{sampleRate, channelCount};
}

} // namespace velotrine
