#pragma once

#include "platform/AUAudioUnit.h"

#include <cstddef>
#include <vector>

namespace velotrine {

/// A host's output channels, filled beforehand, so that what was not written can be told.
class OutputBuffers
{
public:
    static constexpr float untouched = 7.0f;

    OutputBuffers(std::size_t channels, std::size_t frames)
        : samples(channels, std::vector<float>(frames, untouched)), buffers(channels)
    {
        for (std::size_t channel = 0; channel < channels; ++channel)
            buffers[channel] = {1, static_cast<std::uint32_t>(frames * sizeof(float)),
                                samples[channel].data()};
        list.mBuffers = buffers;
    }

    OutputBuffers(const OutputBuffers&) = delete;
    OutputBuffers& operator=(const OutputBuffers&) = delete;

    [[nodiscard]] const std::vector<float>& operator[](std::size_t channel) const { return samples[channel]; }

    void withhold(std::size_t channel) { buffers[channel].mData = nullptr; }

    [[nodiscard]] bool isUntouched(std::size_t channel) const
    {
        return samples[channel] == std::vector<float>(samples[channel].size(), untouched);
    }

    AudioBufferList list;

private:
    std::vector<std::vector<float>> samples;
    std::vector<AudioBuffer> buffers;
};

inline AUAudioUnitStatus renderInto(OutputBuffers& output, const AURenderBlock& block,
                                    AUAudioFrameCount frames, const AURenderEvent* events = nullptr)
{
    AudioUnitRenderActionFlags flags = 0;
    const AudioTimeStamp timestamp;
    return block(&flags, &timestamp, frames, 0, &output.list, events, nullptr);
}

} // namespace velotrine
