#pragma once

#include "audiounit/VelotrineAudioUnit.h"
#include "audiounit/VelotrineComponent.h"
#include "takes/TakePlayer.h"
#include "takes/TakeTap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

namespace velotrine::test {

/// An instrument that a test renders cycle by cycle, with a tap behind it.
class TakenInstrument
{
public:
    static constexpr int longestCycle = 1024;

    explicit TakenInstrument(double sampleRate = 48000.0)
        : unit(velotrineComponentDescription(), AudioComponentInstantiationOptions::none)
    {
        unit.setMaximumFramesToRender(longestCycle);
        (*unit.outputBusses())[0].setFormat({sampleRate, 2});
        unit.allocateRenderResources();
        block = unit.renderBlock();
    }

    [[nodiscard]] VelotrineDSPKernel& kernel() const { return *unit.dspKernel; }

    /// Renders a cycle and lets the tap note it.
    void render(int frames)
    {
        const auto start = samples.size();
        samples.resize(start + static_cast<std::size_t>(frames));
        right.resize(static_cast<std::size_t>(frames));
        const auto bytes = static_cast<std::uint32_t>(static_cast<std::size_t>(frames) * sizeof(float));
        std::array<AudioBuffer, 2> channels{{{1, bytes, samples.data() + start}, {1, bytes, right.data()}}};
        AudioBufferList output{channels};
        if (block(nullptr, nullptr, static_cast<AUAudioFrameCount>(frames), 0, &output, nullptr, nullptr) !=
            noErr)
            throw std::runtime_error("the audio unit refused to render");
        tap.note(kernel(), frames);
    }

    VelotrineAudioUnit unit;
    TakeTap tap;
    std::vector<float> samples; ///< of the left channel, all that was rendered

private:
    AURenderBlock block;
    std::vector<float> right;
};

/// What a take sounds like from its beginning, for so many frames.
inline std::vector<float> soundOf(const Take& take, std::int64_t frames)
{
    TakenInstrument instrument(take.start.sampleRate);
    TakePlayer player(take, take.start.sampleRate);
    player.begin(instrument.kernel());
    while (player.frame() < frames) {
        player.apply(instrument.kernel());
        const auto cycle = player.cycleFrames();
        instrument.render(cycle);
        player.advance(cycle);
    }
    instrument.samples.resize(static_cast<std::size_t>(frames));
    return instrument.samples;
}

} // namespace velotrine::test
