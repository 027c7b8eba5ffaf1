#pragma once

#include "platform/AUAudioUnit.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace velotrine {

/// An audio unit that records what its base class asks of it.
class FakeAudioUnit : public AUAudioUnit
{
public:
    /// What the inner render block saw; it outlives the unit, as the block may.
    struct RenderLog
    {
        std::vector<AUAudioFrameCount> frameCounts;
        std::vector<int> busNumbers;
        const AURenderEvent* lastEvents = nullptr;
        AUAudioUnitStatus answer = noErr;
    };

    using AUAudioUnit::AUAudioUnit;

    [[nodiscard]] std::shared_ptr<AUParameterTree> parameterTree() const override { return tree; }

    void setParameterTree(std::shared_ptr<AUParameterTree> newTree) override { tree = std::move(newTree); }

    [[nodiscard]] std::shared_ptr<AUAudioUnitBusArray> inputBusses() override
    {
        return std::make_shared<AUAudioUnitBusArray>(*this, AUAudioUnitBusType::input);
    }

    [[nodiscard]] std::shared_ptr<AUAudioUnitBusArray> outputBusses() override
    {
        return std::make_shared<AUAudioUnitBusArray>(*this, AUAudioUnitBusType::output);
    }

    [[nodiscard]] AUAudioFrameCount maximumFramesToRender() const override { return maximumFrames; }

    void setMaximumFramesToRender(AUAudioFrameCount frames) override { maximumFrames = frames; }

    [[nodiscard]] const std::vector<AUAudioUnitPreset>& factoryPresets() override { return presets; }

    [[nodiscard]] std::optional<AUAudioUnitPreset> currentPreset() const override { return preset; }

    std::shared_ptr<AUParameterTree> tree;
    std::shared_ptr<RenderLog> log = std::make_shared<RenderLog>();
    int presetsApplied = 0;
    int presetsRestored = 0;
    std::function<void()> whileMade;    ///< called in makeRenderResources
    std::function<void()> whileDropped; ///< called in dropRenderResources

protected:
    void makeRenderResources() override
    {
        if (whileMade)
            whileMade();
    }

    void dropRenderResources() override
    {
        if (whileDropped)
            whileDropped();
    }

    [[nodiscard]] AUInternalRenderBlock internalRenderBlock() override
    {
        return [log = log](AudioUnitRenderActionFlags*, const AudioTimeStamp*, AUAudioFrameCount frameCount,
                           int busNumber, AudioBufferList* output, const AURenderEvent* events,
                           const AURenderPullInputBlock*) {
            log->frameCounts.push_back(frameCount);
            log->busNumbers.push_back(busNumber);
            log->lastEvents = events;
            for (const auto& buffer : output->mBuffers)
                std::fill_n(static_cast<float*>(buffer.mData), frameCount, 0.5f);
            return log->answer;
        };
    }

    void applyCurrentPreset(const std::optional<AUAudioUnitPreset>& newPreset,
                            AUParameterObserverToken) override
    {
        preset = newPreset;
        ++presetsApplied;
    }

    void restoreCurrentPreset(const std::optional<AUAudioUnitPreset>& newPreset) override
    {
        preset = newPreset;
        ++presetsRestored;
    }

private:
    AUAudioFrameCount maximumFrames = 64;
    std::vector<AUAudioUnitPreset> presets;
    std::optional<AUAudioUnitPreset> preset;
};

} // namespace velotrine
