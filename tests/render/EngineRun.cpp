#include "tests/render/EngineRun.h"

#include "audiounit/Parameters.h"
#include "audiounit/VelotrineAudioUnit.h"
#include "audiounit/VelotrineComponent.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace velotrine {

namespace {

class Driver
{
public:
    explicit Driver(const EngineRun::Setup& setup)
        : unit(velotrineComponentDescription(), AudioComponentInstantiationOptions::loadInProcess),
          cycleFrames(setup.cycleFrames)
    {
        unit.setMaximumFramesToRender(static_cast<AUAudioFrameCount>(cycleFrames));
        const auto busses = unit.outputBusses();
        (*busses)[0].setFormat({static_cast<double>(setup.sampleRate), 2});
        unit.allocateRenderResources();
        unit.setCurrentPreset(unit.factoryPresets().at(static_cast<std::size_t>(setup.preset)));
        const auto tree = unit.parameterTree();
        for (const auto& [identifier, value] : setup.values)
            tree->parameterWithAddress(parameterWithIdentifier(identifier)->address)->setValue(value);
        tree->parameterWithAddress(addressOf(GlobalParameter::sync))->setValue(0.0f);
        renderBlock = unit.renderBlock();
    }

    void play(bool on) { unit.dspKernel->internalPlaying = on; }

    [[nodiscard]] bool isSilent() const { return unit.dspKernel->voicePool->triggerOrder.empty(); }

    void render(std::int64_t frames)
    {
        for (; frames > 0; frames -= cycleFrames)
            renderCycle(static_cast<std::size_t>(std::min<std::int64_t>(cycleFrames, frames)));
    }

    EngineRun result;

private:
    void renderCycle(std::size_t frames)
    {
        const auto start = result.left.size();
        result.left.resize(start + frames);
        result.right.resize(start + frames);
        const auto bytes = static_cast<std::uint32_t>(frames * sizeof(float));
        std::array<AudioBuffer, 2> channels{
            {{1, bytes, result.left.data() + start}, {1, bytes, result.right.data() + start}}};
        AudioBufferList output{channels};
        if (renderBlock(nullptr, nullptr, static_cast<AUAudioFrameCount>(frames), 0, &output, nullptr,
                        nullptr) != noErr)
            throw std::runtime_error("the audio unit refused to render");
        for (const auto& event : unit.dspKernel->noteEvents())
            result.notes.push_back({static_cast<std::int64_t>(start) + event.frame, event});
    }

    VelotrineAudioUnit unit;
    AURenderBlock renderBlock;
    std::int64_t cycleFrames;
};

} // namespace

std::vector<float> EngineRun::interleaved() const
{
    std::vector<float> samples;
    for (std::size_t i = 0; i < left.size(); ++i) {
        samples.push_back(left[i]);
        samples.push_back(right[i]);
    }
    return samples;
}

EngineRun runEngine(const EngineRun::Setup& setup)
{
    Driver driver(setup);
    driver.play(true);
    driver.render(setup.playedFrames);
    driver.play(false);
    driver.render(setup.tailFrames);
    while (setup.untilSilent && !driver.isSilent())
        driver.render(setup.cycleFrames);
    return std::move(driver.result);
}

} // namespace velotrine
