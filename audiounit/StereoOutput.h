#pragma once

#include <algorithm>

namespace velotrine {

/// Where a stereo signal goes: the samples of both channels, in the caller's memory. Either may be null, and
/// is then not written.
struct StereoOutput
{
    float* left = nullptr;
    float* right = nullptr;

    /// The same from a later frame on. Channels that are null stay so.
    [[nodiscard]] constexpr StereoOutput from(int frame) const noexcept
    {
        return {left != nullptr ? left + frame : nullptr, right != nullptr ? right + frame : nullptr};
    }

    /// Writes silence.
    void clear(int frames) const noexcept
    {
        for (auto* const channel : {left, right})
            if (channel != nullptr)
                std::fill_n(channel, frames, 0.0f);
    }
};

} // namespace velotrine
