#pragma once

#include "audiounit/CycleRenderer.h"
#include "engine/Nonblocking.h"

#include <array>
#include <atomic>

namespace velotrine {

/// Where the unit's stereo sound becomes that of the device: its two channels as they are, their mean where
/// there is only one, silence on any beyond the second.
///
/// Two threads may ask for sound, the device's and the one that keeps the clock going without a device;
/// whichever asks while the other renders gets silence. Neither waits.
class AVAudioMixerNode
{
public:
    /// Takes over the render block of a unit that is allocated for cycles of CycleRenderer's default length.
    /// Allocates; while nothing renders.
    void setSource(AURenderBlock block);

    /// Fills the channels; silence as long as there is no source, or where it refuses to render. Render
    /// thread.
    /// @param channels      `channelCount` of them, each `frames` long
    /// @param channelCount  0 renders for the clock's sake alone
    void render(float* const* channels, int channelCount, int frames) noexcept VELOTRINE_NONBLOCKING;

private:
    void renderPart(float* const* channels, int channelCount, int start,
                    int frames) noexcept VELOTRINE_NONBLOCKING;

    static constexpr int longestPart = 512; ///< frames

    CycleRenderer renderer;
    bool hasSource = false;
    std::array<float, longestPart> left{};  ///< for devices with fewer than two channels
    std::array<float, longestPart> right{}; ///< likewise
    std::atomic_flag rendering;
};

} // namespace velotrine
